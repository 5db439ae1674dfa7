#pragma once

#include "Alerts/AlertReading.hpp"
#include "Alerts/SpaceAlert.hpp"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

// Reading alerts against their measurements, and choosing which to notify. A limit is passed
// only when the value is strictly above it; the comparison is made on whole numbers, so that
// a value exactly at the limit never reads exceeded through rounding.
namespace tarnwick::AlertCheck {

// A mounted disk's space, as measured now.
struct Disk {
    std::int64_t total = 0;
    std::int64_t available = 0;
};

// A folder's change over an alert's period, as the comparison of the period's start snapshot
// with the latest one reports it.
struct Growth {
    std::int64_t change = 0;
    bool uncertain = false; // one of the two scans didn't read the folder fully
    Date since {};          // the date of the start snapshot
};

// What the latest snapshot of a folder's disk says of the folder.
struct Folder {
    Date measuredAt {};                   // the snapshot's date
    std::int64_t size = 0;                // allocated bytes
    std::optional<std::int64_t> capacity; // of its disk, for share
    std::optional<Growth> growth;         // over the alert's period, for growth
};

// disk is absent when the disk isn't mounted.
AlertReading readDisk(const SpaceAlert::Condition::DiskUsed& limit, const std::optional<Disk>& disk, Date now);

// folder is absent when no snapshot of its disk keeps it (under 10 MB, or never scanned).
// Disk conditions are read by readDisk; given here, they read unknown.
AlertReading readFolder(const SpaceAlert::Condition& condition, const std::optional<Folder>& folder);

struct Notifications {
    std::vector<std::string> toNotify; // in id order
    std::set<std::string> notified;    // what to remember as notified from now on
};

// readings are keyed by alert id; notified holds the ids notified before. An exceeded alert is
// notified once and stays quiet until a reading below re-arms it; an unknown reading, or none,
// changes nothing.
Notifications notifications(const std::map<std::string, AlertReading>& readings, const std::set<std::string>& notified);

}
