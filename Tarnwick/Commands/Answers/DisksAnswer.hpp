#pragma once

#include "History/Calendar.hpp"
#include "History/SpaceForecast.hpp"
#include "Platform/MountTable.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "Scanning/TreeDate.hpp"

#include <cstdint>
#include <optional>
#include <vector>

namespace tarnwick {

// The computer's disks, their space now and how it went over the past days.
struct DisksAnswer {
    enum class Access { wholeDisk, someFolders, none };

    // A change of used space since the start of a period, from the volume's record.
    struct UsedChange {
        std::int64_t bytes = 0;
        Date since {};
    };

    struct Disk {
        DiskMount disk;
        std::optional<VolumeIdentity::Space> space; // absent when the disk couldn't be asked
        Access access = Access::none;
        std::int64_t snapshotDays = 0; // days with a snapshot of some place on it
        std::optional<Date> latestSnapshot;
        std::optional<UsedChange> sinceYesterday;
        std::optional<UsedChange> overMonth;
        int measuredDays = 0; // of the past days, those with a measurement
        std::optional<SpaceForecast> forecast;
    };

    std::vector<Disk> disks;
    Calendar calendar; // the history's, in which dates and forecasts are told
};

}
