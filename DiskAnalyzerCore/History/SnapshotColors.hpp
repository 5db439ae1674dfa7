#pragma once

#include "Classification/BucketMap.hpp"
#include "Classification/ContentMap.hpp"
#include "Classification/DateGroup.hpp"

#include <memory>

namespace tarnwick {

class ScanTree;

// The colour totals a snapshot's rests come from: the content map and the bucket maps of
// the two date modes and of visibility, all of the same tree, with the date boundaries the
// date maps were built with. The app passes the maps it already shows; a missing map leaves
// its mode out of the rests.
struct SnapshotColors {
    std::shared_ptr<const ContentMap> content;
    std::shared_ptr<const BucketMap> modified;
    std::shared_ptr<const BucketMap> created;
    std::shared_ptr<const BucketMap> hidden;
    DateGroup::Boundaries boundaries;

    // Builds all four maps of a tree.
    static SnapshotColors make(std::shared_ptr<const ScanTree> tree, const DateGroup::Boundaries& boundaries);
};

}
