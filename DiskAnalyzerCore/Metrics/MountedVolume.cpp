#include "Metrics/MountedVolume.hpp"

#include "Platform/MountTable.hpp"

namespace tarnwick {

std::optional<MountedVolume> MountedVolume::find(const std::string& volume, std::span<const std::string> places)
{
    for (const std::string& place : places) {
        if (VolumeIdentity::identifier(place) != volume)
            continue;
        std::optional<MountInfo> mount = MountTable::lookup(place);
        if (!mount)
            continue;
        std::optional<VolumeIdentity::Space> space = VolumeIdentity::space(mount->mountPoint);
        if (space)
            return MountedVolume { mount->mountPoint, *space };
    }
    return std::nullopt;
}

}
