#pragma once

#include <cstdint>

namespace tarnwick {

// The size and free space of the volume a scan covers, in bytes. The map shows the free
// space and the used space the scan did not account for when the whole volume is shown.
struct VolumeCapacity {
    std::int64_t total = 0;
    std::int64_t available = 0;

    bool operator==(const VolumeCapacity&) const = default;
};

}
