#pragma once

#include "Scanning/TreeDate.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

// One saved snapshot of a place: its latest ("current.snap") or one of its day snapshots
// ("{id}.snap"). Absent optionals are unknown, and are left out of the JSON.
struct HistoryEntry {
    std::int64_t id = 0;
    Date date {}; // held to whole microseconds (HistoryDate)
    std::int64_t total = 0;
    std::optional<std::int64_t> volumeTotal;
    std::optional<std::int64_t> volumeAvailable;
    bool isKept = false;
    std::optional<std::string> note;
    std::string file;
    std::int64_t bytes = 0;
    std::optional<bool> outOfDate;
    std::optional<std::int64_t> issueCount;
    std::optional<bool> hasAllowableIssues;
    std::optional<std::vector<std::string>> outOfDatePaths;
    // Listed by a rebuild of the index although its file does not decode: its date is the
    // file's modification time, which the damage may have moved.
    bool isUnreadable = false;

    bool operator==(const HistoryEntry&) const = default;
};

}
