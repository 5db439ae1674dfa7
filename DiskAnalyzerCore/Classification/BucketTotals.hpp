#pragma once

#include <cstdint>
#include <vector>

namespace tarnwick {

// A folder's bytes split by bucket: the per-folder colour totals that snapshots keep.
struct BucketTotals {
    // The sum of all buckets, saturating.
    std::int64_t bytes = 0;
    std::vector<std::int64_t> buckets;

    bool operator==(const BucketTotals&) const = default;
};

}
