#pragma once

#include "Classification/ScanAnalysis.hpp"
#include "Classification/TimeZone.hpp"
#include "History/Snapshot.hpp"

#include <optional>

namespace tarnwick {

class ScanTree;

// Reduces a finished scan tree to a snapshot: the root and, in pre-order, every folder or
// package of at least Snapshot::keepThreshold bytes on disk whose parent is kept. Files are
// never kept one by one, and nothing under a folder that is not kept is kept.
namespace SnapshotReducer {

struct Options {
    Date date {}; // when the scan finished; kept to the microsecond
    std::optional<Snapshot::Volume> volume;
    // The colours the snapshot's rests are cut from: the scan's own analysis, whose date maps
    // describe the day it finished. Without it the snapshot keeps sizes rounded to the
    // threshold, kinds, the flags allocatedUnknown, incomplete and contentsUnread, and names.
    const ScanAnalysis* analysis = nullptr;
    // Local day numbers are counted in this zone; the system's when absent.
    const TimeZone* zone = nullptr;
};

Snapshot reduce(const ScanTree& tree, const Options& options);

}

}
