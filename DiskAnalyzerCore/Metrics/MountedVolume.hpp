#pragma once

#include "Platform/VolumeIdentity.hpp"

#include <functional>
#include <optional>
#include <span>
#include <string>

namespace tarnwick {

// A volume of the history as it is mounted now: where, and its space at this moment.
struct MountedVolume {
    std::string mountPoint;
    VolumeIdentity::Space space;

    bool operator==(const MountedVolume&) const = default;

    // Finds the volume through the places saved on it: the mount holding the first of them
    // that still lies on that volume. Absent when none does (the disk is not mounted, or
    // another disk is mounted where it was).
    using Lookup = std::function<std::optional<MountedVolume>(const std::string& volume, std::span<const std::string> places)>;
    static std::optional<MountedVolume> find(const std::string& volume, std::span<const std::string> places);
};

}
