#pragma once

#include "History/HistoryChanges.hpp"
#include "History/VolumeTimeline.hpp"
#include "Scanning/TreeDate.hpp"

#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

// A place's size at every snapshot of its history, oldest first, and the available space of
// its disk over the past days.
struct HistoryAnswer {
    // One snapshot: the place's size there, or why there is none.
    struct Row {
        Date date {};
        std::optional<HistoryQueries::SizePoint> point; // absent for a snapshot that couldn't be read
    };
    struct Disk {
        std::string mountPoint;
        std::vector<VolumeTimeline::Point> available; // one a day
    };

    std::string place;     // the path asked for, absolute
    std::string historyOf; // the scanned place whose history holds it
    bool inLatest = true;  // false: not in the latest snapshot (deleted, moved, now under 10 MB)
    Date latestDate {};    // the latest snapshot's
    std::vector<Row> rows;
    std::optional<Disk> disk; // when the place is on a mounted disk
};

}
