#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Which volume holds a path, as a name that stays the same across mounts and reboots, and how
// much space the volume has. The history keys places and volume logs by this identifier.
namespace tarnwick::VolumeIdentity {

inline constexpr std::string_view uuidFolder = "/dev/disk/by-uuid";

// A block device that the UUID folder names.
struct NamedDevice {
    std::string uuid;
    std::uint32_t major = 0;
    std::uint32_t minor = 0;

    bool operator==(const NamedDevice&) const = default;
};

struct Space {
    std::int64_t total = 0;     // capacity in bytes
    std::int64_t available = 0; // bytes an unprivileged user can still write
    std::int64_t reserved = 0;  // free bytes only the system may use (ext4's reserve)

    bool operator==(const Space&) const = default;
};

// The file system's UUID when one of the named devices is the path's device, else
// "dev:MAJOR:MINOR" (a file system without a UUID, or one on no block device, such as tmpfs
// or a btrfs subvolume).
std::string identifierFor(std::uint32_t major, std::uint32_t minor, std::span<const NamedDevice> named);
// The block devices behind the UUID folder's links; none when the folder does not exist.
std::vector<NamedDevice> namedDevices(const std::string& folder = std::string(uuidFolder));
// Absent when the path cannot be looked at. Links are not followed: a link's own volume counts.
std::optional<std::string> identifier(const std::string& path, const std::string& folder = std::string(uuidFolder));

// Absent when the path's file system cannot be asked (statvfs).
std::optional<Space> space(const std::string& path);

}
