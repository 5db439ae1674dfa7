#include "Platform/VolumeIdentity.hpp"

#include <dirent.h>
#include <limits>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>

namespace tarnwick::VolumeIdentity {

namespace {

std::int64_t bytesOf(unsigned long long blocks, unsigned long long blockSize)
{
    unsigned long long bytes = 0;
    if (__builtin_mul_overflow(blocks, blockSize, &bytes) || bytes > static_cast<unsigned long long>(std::numeric_limits<std::int64_t>::max()))
        return std::numeric_limits<std::int64_t>::max();
    return static_cast<std::int64_t>(bytes);
}

}

std::string identifierFor(std::uint32_t major, std::uint32_t minor, std::span<const NamedDevice> named)
{
    for (const NamedDevice& device : named) {
        if (device.major == major && device.minor == minor)
            return device.uuid;
    }
    return "dev:" + std::to_string(major) + ":" + std::to_string(minor);
}

std::vector<NamedDevice> namedDevices(const std::string& folder)
{
    std::vector<NamedDevice> devices;
    DIR* directory = ::opendir(folder.c_str());
    if (!directory)
        return devices;
    while (const dirent* entry = ::readdir(directory)) {
        std::string name = entry->d_name;
        if (name == "." || name == "..")
            continue;
        struct stat info {};
        // The entries are links to the device nodes ("../../sda2"): follow them.
        if (::stat((folder + "/" + name).c_str(), &info) != 0 || !S_ISBLK(info.st_mode))
            continue;
        devices.push_back({ name, ::major(info.st_rdev), ::minor(info.st_rdev) });
    }
    ::closedir(directory);
    return devices;
}

std::optional<std::string> identifier(const std::string& path, const std::string& folder)
{
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0)
        return std::nullopt;
    return identifierFor(::major(info.st_dev), ::minor(info.st_dev), namedDevices(folder));
}

std::optional<Space> space(const std::string& path)
{
    struct statvfs info {};
    if (::statvfs(path.c_str(), &info) != 0)
        return std::nullopt;
    unsigned long long unit = info.f_frsize ? info.f_frsize : info.f_bsize;
    fsblkcnt_t reserved = info.f_bfree > info.f_bavail ? info.f_bfree - info.f_bavail : 0;
    return Space { bytesOf(info.f_blocks, unit), bytesOf(info.f_bavail, unit), bytesOf(reserved, unit) };
}

}
