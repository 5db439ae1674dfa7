#pragma once

#include "Classification/BucketMap.hpp"
#include "Classification/ContentMap.hpp"
#include "Classification/OwnerBuckets.hpp"
#include "Classification/OwnerMap.hpp"

#include <memory>

namespace tarnwick {

// The maps a tree's colour modes are read from: its content types, who owns it, and the
// date and visibility groups. A finished scan has them all from its analysis; for a tree
// without one (a snapshot's, a running scan's preview) any may be missing.
struct ModeMaps {
    std::shared_ptr<const ContentMap> content;
    std::shared_ptr<const OwnerMap> owners;
    std::shared_ptr<const OwnerBuckets> ownerBuckets;
    std::shared_ptr<const BucketMap> modified;
    std::shared_ptr<const BucketMap> created;
    std::shared_ptr<const BucketMap> hidden;
};

}
