#pragma once

#include <cstdint>

namespace tarnwick {

// Bytes that belong to one bucket of a bucket map.
struct BucketShare {
    int bucket = 0;
    std::int64_t bytes = 0;

    bool operator==(const BucketShare&) const = default;
};

}
