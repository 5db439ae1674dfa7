#pragma once

#include "Platform/MountInfo.hpp"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

// One mount of the kernel's mount table, with its fields unescaped.
struct MountEntry {
    std::uint32_t deviceMajor = 0;
    std::uint32_t deviceMinor = 0;
    std::string root;            // the folder of the file system mounted here; "/" unless a bind mount
    std::string mountPoint;
    std::string mountOptions;    // this mount's own options ("rw,relatime")
    std::string fileSystemType;
    std::string source;          // a device path, a share, or a pseudo name
    std::string superOptions;    // the file system's options

    bool operator==(const MountEntry&) const = default;
};

// A mounted local disk, for the disk list and the menu bar.
struct DiskMount {
    MountInfo mount;
    bool isDiskImage = false; // backed by a loop device, the Linux form of a mounted disk image

    bool operator==(const DiskMount&) const = default;
};

namespace MountTable {

inline constexpr std::string_view systemTable = "/proc/self/mountinfo";

// Octal escapes of the mount table ("\040" for a blank) back to their bytes.
std::string unescape(std::string_view field);
// Absent for a line that is not a mount table line.
std::optional<MountEntry> parseLine(std::string_view line);
// Malformed lines are skipped: one odd mount must not hide all the others.
std::vector<MountEntry> parse(std::string_view text);
// Absent when the table cannot be read.
std::optional<std::vector<MountEntry>> read(const std::string& file = std::string(systemTable));

// The mount whose mount point is the longest path prefix of realPath; of mounts stacked on
// one mount point, the last listed is the visible one. Null when none holds the path.
const MountEntry* holding(const std::vector<MountEntry>& mounts, std::string_view realPath);
MountInfo info(const MountEntry& entry, std::uint64_t fileSystemID);
std::uint64_t fileSystemID(std::uint32_t major, std::uint32_t minor);

// The default mount lookup: the mount holding the real path of path. Absent when the path
// does not exist or the table cannot be read.
std::optional<MountInfo> lookup(const std::string& path);

// The mount whose mount point is exactly one of the forms of a path (as typed, with links
// resolved): a disk given by its mount point. Absent for any folder inside one, and when the
// table cannot be read.
std::optional<MountEntry> mountedAt(const std::vector<std::string>& pathForms);

// Whether the startup disk is split into a read-only system volume and a data volume at
// "/System/Volumes/Data". Never on Linux, where "/" is an ordinary volume.
bool hasSeparateDataVolume();

// Local, non-virtual mounts backed by a block device, one per device.
// isDiskBacked tells whether a mount is of a block device (and not, say, a file bind-mounted from one).
std::vector<DiskMount> disks(const std::vector<MountEntry>& mounts, const std::function<bool(const MountEntry&)>& isDiskBacked);
std::vector<DiskMount> disks();

}

}
