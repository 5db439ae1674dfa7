#pragma once

#include "Classification/ContentMap.hpp"
#include "Classification/OwnerMap.hpp"
#include "Scanning/ScanScope.hpp"
#include "Scanning/ScanTree.hpp"

#include <memory>

namespace tarnwick {

// The tree that summary and find answer from: the finished result the window shows, or,
// during a first scan, the preview the window fills in, whose sizes are only lower bounds.
struct ScanView {
    std::shared_ptr<const ScanTree> tree;
    std::shared_ptr<const ContentMap> content; // null for a preview: no colours yet
    std::shared_ptr<const OwnerMap> owners;    // null for a preview
    ScanScope scope;
    NodeID openFolder = NodeID::root();
    bool stillScanning = false;
};

}
