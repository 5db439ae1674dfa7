#pragma once

#include <algorithm>
#include <cstdint>

namespace tarnwick {

// The size and space of the volume a scan covers, in bytes. A whole disk's map and its
// summaries split the capacity into what the scan found, used space it did not find, the
// file system's reserve and the space still available, so the four always add up.
struct VolumeCapacity {
    std::int64_t total = 0;
    std::int64_t available = 0; // what an unprivileged user can still write
    std::int64_t reserved = 0;  // free blocks kept back for the system (free minus available)

    // Used space that a scan of scanned bytes does not account for (other users' files it
    // could not read, snapshots, files deleted while still open), never below zero.
    [[nodiscard]] std::int64_t unaccounted(std::int64_t scanned) const
    {
        std::int64_t rest = std::max<std::int64_t>(total, 0);
        for (std::int64_t part : { available, reserved, scanned }) {
            part = std::max<std::int64_t>(part, 0);
            if (part >= rest)
                return 0;
            rest -= part;
        }
        return rest;
    }

    bool operator==(const VolumeCapacity&) const = default;
};

}
