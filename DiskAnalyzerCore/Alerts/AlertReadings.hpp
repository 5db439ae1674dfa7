#pragma once

#include "Alerts/AlertReading.hpp"
#include "Alerts/SpaceAlert.hpp"
#include "Alerts/SpaceAlertStore.hpp"

#include <string>

namespace tarnwick {

class HistoryStore;

// Measuring alerts as the alert commands show them and the alert watch checks them: a disk
// by its space now, a folder by the latest snapshot that keeps it, and the words for both.
namespace AlertReadings {

// A disk when the path is a mount point, else a folder.
SpaceAlertStore::PlaceKind placeKind(const std::string& path);

// store may be null (no history yet): folders then read unknown.
AlertReading read(const SpaceAlert& alert, HistoryStore* store, Date now);

// "fuller than 90 %", "larger than 30.0 GB", "more than 5 % of its disk",
// "grows by more than 10.0 GB over the past week".
std::string limitText(const SpaceAlert::Condition& condition);
// The measured value: "28.3 %", "12.1 GB", "+2.10 GB since 2024-05-25 10:00"; empty when unknown.
std::string valueText(const SpaceAlert::Condition& condition, const AlertReading& reading);
// What a notification says: "“Library” grew by more than 10.0 GB over the past week."
std::string notificationText(const SpaceAlert& alert);

}

}
