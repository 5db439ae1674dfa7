#pragma once

#include "Scanning/TreeDate.hpp"

#include <memory>
#include <string>

namespace tarnwick {

class HistoryStore;
class ScanTree;

// What the history pictures are made from: a week of change in the demo home folder, a month
// of a demo disk's free space, and a scan that could not read everything.
namespace HistoryDemo {

// The demo home as it was a week ago: exports that were deleted since, and none of the files
// added since. Run before the first scan.
bool makeWeekAgo(const std::string& home);
// This week's changes: the exports gone, a model, an installer and some caches added.
bool makeToday(const std::string& home);

// The volume of the demo disk in the free space picture.
inline constexpr const char* diskVolume = "demo-disk";
// Thirty days of a 500 GB disk's space filling at a steady pace, with a large download and an
// emptied trash as one-off jumps.
bool recordDiskMonth(HistoryStore& store, Date now);

// A scan of the demo home in which some places were refused and others vanished while it ran.
std::shared_ptr<const ScanTree> unreadableScan(const std::string& home);

}

}
