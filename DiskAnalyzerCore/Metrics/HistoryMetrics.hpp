#pragma once

#include "Alerts/AlertReading.hpp"
#include "Alerts/SpaceAlert.hpp"
#include "Metrics/MetricFamily.hpp"
#include "Metrics/MountedVolume.hpp"

#include <span>
#include <string_view>
#include <vector>

namespace tarnwick {

class HistoryStore;

// The history's figures as metrics for Prometheus, read from the saved snapshots, the volume
// logs and the alerts' readings: no scan. What a server sends per scrape is bounded by what
// the user chose to watch, never by the size of a tree:
//
// - per disk that holds a scanned place (labels mountpoint, volume; mountpoint is empty while
//   the disk is not mounted): capacity, available and reserved bytes (reserved only while
//   mounted; the others then from its latest measurement), seconds until full at the current
//   pace (absent without a forecast), and how far back its history reaches (in seconds, as
//   Prometheus counts time);
// - per scanned place, the roots of scans and not the folders inside them (labels path,
//   volume): its size on disk, the date of its latest snapshot, and its change since
//   yesterday, over a week and over a month (period), each absent while the history does not
//   reach back that far;
// - per alert (labels alert_id, path): 1 when exceeded, 0 when below, absent while unknown.
//
// A disk thus gives 5 series, a place 5, an alert 1.
namespace HistoryMetrics {

inline constexpr std::string_view prefix = "tarnwick_";

struct AlertState {
    SpaceAlert alert;
    AlertReading reading;
};

// Families in a fixed order with their samples sorted by labels; families without samples
// are left out. Damaged snapshots are passed over as everywhere (SnapshotLoader).
std::vector<MetricFamily> make(HistoryStore& store, std::span<const AlertState> alerts, const MountedVolume::Lookup& mounted);

// How many series the families hold.
std::size_t seriesCount(std::span<const MetricFamily> families);

}

}
