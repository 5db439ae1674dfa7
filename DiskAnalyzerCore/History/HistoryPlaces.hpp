#pragma once

#include "History/HistoryStore.hpp"
#include "History/Snapshot.hpp"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

// Which saved history answers for a place on disk. A place is kept by the history of a
// scanned source that is the place itself or holds it: a scan of "/" keeps the large folders
// of the whole disk, a scan of ~/Projects keeps those of the projects in finer detail and
// more recently. The deepest source wins, as it is the one scanned with the place in mind.
namespace HistoryPlaces {

// The sources whose path is place or holds it, deepest first. Of sources at one path (the
// same mount point with another disk in it), those on `volume` come first, then the one
// saved most recently.
std::vector<HistoryStore::SourceRecord> holding(
    std::span<const HistoryStore::SourceRecord> records, std::string_view place, std::optional<std::string_view> volume = std::nullopt);

// A place as typed and with its links resolved, when that differs: the forms a history may
// know it by.
std::vector<std::string> pathForms(const std::string& path);

// A place found in the snapshots of a source.
struct Located {
    HistoryStore::SourceRecord record;
    std::shared_ptr<const Snapshot> current; // the latest intact snapshot of the source
    HistoryEntry latest;                     // its entry, with the facts of its file
    bool latestIsCurrent = true;             // false when current.snap could not be read
    std::vector<HistoryEntry> skipped;       // newer snapshots that could not be read
    std::string place;                       // the path it was found at, absolute
    // The snapshot that keeps the place and its node there: current, or when current no
    // longer keeps it (deleted, moved, now under 10 MB) the newest older one that did.
    std::shared_ptr<const Snapshot> keptIn;
    HistoryEntry keptInEntry;
    std::int32_t node = 0;

    [[nodiscard]] bool isInLatest() const { return keptIn == current; }
};

// The first of the holding sources whose latest intact snapshot keeps the place, trying each
// of the place's path forms (as typed, with links resolved) in turn; failing that, the first
// whose older snapshots kept it, so that a folder deleted since still has its history.
// Absent when no snapshot keeps it: the place was never scanned, is under 10 MB, or its
// snapshots are unreadable.
std::optional<Located> locate(HistoryStore& store, std::span<const std::string> pathForms, std::optional<std::string_view> volume = std::nullopt);
// The same for a path, by its forms, on the volume that holds it.
std::optional<Located> locate(HistoryStore& store, const std::string& path);

}

}
