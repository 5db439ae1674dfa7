#pragma once

#include "Classification/ScanAnalysis.hpp"
#include "Scanning/ScanScope.hpp"
#include "Scanning/ScanTree.hpp"

#include <memory>

namespace tarnwick {

// The tree that summary and find answer from: the finished result the window shows, or,
// during a first scan, the preview the window fills in, whose sizes are only lower bounds.
struct ScanView {
    std::shared_ptr<const ScanTree> tree;
    std::shared_ptr<const ScanAnalysis> analysis; // null for a preview: no colours yet
    ScanScope scope;
    NodeID openFolder = NodeID::root();
    bool stillScanning = false;
};

}
