#pragma once

#include "Alerts/AlertCheck.hpp"
#include "Alerts/SpaceAlert.hpp"
#include "History/HistorySource.hpp"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

class HistoryStore;

// The alerts read against what is known now, for the settings' list: a disk against its space
// now; a folder against the latest snapshot of the disk that holds it (its size, its share of
// the capacity recorded with that snapshot, and its growth since the day snapshot at the start
// of the alert's period).
namespace AlertReadings {

struct Disk {
    std::string mountPoint;
    HistorySource source; // as the history keeps the disk
};

// The disk whose mount point holds path most closely; absent when none does.
std::optional<Disk> holding(const std::vector<Disk>& disks, const std::string& path);

// What the latest snapshot of the disk says of a folder; absent when no snapshot keeps it.
std::optional<AlertCheck::Folder> folder(HistoryStore& store, const Disk& disk, const std::string& path,
    const SpaceAlert::Condition& condition);

// Readings keyed by alert id. store may be null (no history yet).
std::map<std::string, AlertReading> read(const std::vector<SpaceAlert>& alerts, const std::vector<Disk>& disks, HistoryStore* store);

// The system's disks.
std::vector<Disk> systemDisks();

}

}
