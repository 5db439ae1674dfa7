#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace tarnwick {

// The mounted file system that holds a path, as the scope resolver needs it.
struct MountInfo {
    std::string mountPoint;
    std::string deviceName;      // what is mounted: a device, a share, or a pseudo name such as "proc"
    std::string fileSystemType;  // e.g. "ext4", "apfs", "fuse.sshfs"
    std::uint64_t fileSystemID = 0; // tells volumes apart; equal for every path on one file system
    bool isLocal = true;
    bool isReadOnly = false;

    bool operator==(const MountInfo&) const = default;
};

// Finds the mount holding a path; absent when the path cannot be looked up at all.
// Passed in wherever mounts are consulted, so that a different table can stand in.
using MountLookup = std::function<std::optional<MountInfo>(const std::string& path)>;

}
