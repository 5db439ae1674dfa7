#pragma once

#include "DailyScans.hpp"

#include <functional>

namespace tarnwick {

class HistoryStore;

// A disk's snapshot taken in the background: the scan at background priority, stopped as
// soon as the defer test asks, then saved into the history with its colours and the volume's
// space. saved is called after each save, for the folder alerts of that disk.
namespace DiskSnapshot {

DailyScans::DiskOutcome take(HistoryStore& store, const HistorySource& disk, const DailyScans::ShouldDefer& shouldDefer);

DailyScans::ScanRunner runner(HistoryStore& store, std::function<void(const HistorySource&)> saved);

}

}
