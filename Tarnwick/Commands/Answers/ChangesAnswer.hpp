#pragma once

#include "History/HistoryChanges.hpp"
#include "History/HistoryPeriod.hpp"
#include "Scanning/TreeDate.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

// How places changed over a period: one place asked about, or the root of every disk.
struct ChangesAnswer {
    // One place compared from the snapshot at the period's start to its latest intact one.
    struct Place {
        std::string path;      // absolute
        std::string historyOf; // the scanned place whose history holds it
        HistoryPeriod period = HistoryPeriod::defaultPeriod;
        Date from {};
        Date to {};
        std::size_t snapshotCount = 0;
        Date historyStart {};
        bool coversPeriod = true; // false when the history is shorter than the period
        std::optional<Date> unreadableStart;  // the snapshot the period asked for, when a neighbour stood in
        std::optional<Date> unreadableLatest; // a newer latest snapshot that couldn't be read
        std::optional<Date> lastKept;         // absent while the latest snapshot keeps the place
        HistoryQueries::Presence presence = HistoryQueries::Presence::both;
        HistoryQueries::SizeBasis sizes = HistoryQueries::SizeBasis::rounded;
        std::int64_t sizeBefore = 0;
        std::int64_t sizeAfter = 0;
        bool beforeIncomplete = false;
        bool afterIncomplete = false;
        std::int64_t change = 0;
        bool isUncertain = false;
        std::vector<HistoryQueries::PlaceChange> inside; // largest change first
        std::int64_t moreInside = 0;                     // changed places inside beyond those
        HistoryQueries::RestChange rest;
        std::vector<HistoryQueries::PlaceChange> grewMost;
        // The types whose size changed, largest change first; absent unless both snapshots
        // have colour totals.
        std::optional<std::vector<HistoryQueries::TypeChange>> byType;
        std::vector<HistoryQueries::OneScanPlace> readByOneScan;
    };

    std::vector<Place> places; // at least one
    bool everyDisk = false;    // no place was asked about: the root of each disk
    std::size_t limit = 0;     // changed places asked for in each list
};

}
