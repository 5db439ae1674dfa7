#include "Scanning/ScopeResolver.hpp"

#include "Platform/MountTable.hpp"
#include "Platform/FileSystemTypes.hpp"
#include "Support/UnicodeNames.hpp"

#include <climits>
#include <cstdlib>
#include <fstream>
#include <unistd.h>

namespace tarnwick::ScopeResolver {

namespace {

std::string withoutTrailingSlashes(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

// The startup disk counts as a whole only when its data volume is unmistakable; otherwise
// a scan of "/" would count the firmlinked folders twice, or miss the user's data.
std::expected<ScanScope, ScopeError> dataVolumeScope(const std::string& selected, const MountLookup& lookup)
{
    const std::string dataPoint(dataVolumeMountPoint);
    std::optional<MountInfo> data = lookup(dataPoint);
    if (!data || withoutTrailingSlashes(data->mountPoint) != dataPoint || data->fileSystemType != "apfs")
        return std::unexpected(ScopeError::macDataVolumeNotFound());
    std::optional<MountInfo> root = lookup("/");
    if (!root || root->mountPoint != "/" || root->fileSystemID == data->fileSystemID)
        return std::unexpected(ScopeError::macDataVolumeNotFound());
    std::optional<MountInfo> users = lookup("/Users");
    if (!users || users->fileSystemID != data->fileSystemID)
        return std::unexpected(ScopeError::macDataVolumeNotFound());
    return ScanScope { selected, dataPoint, SourceKind::macData, std::move(*data) };
}

}

std::expected<ScanScope, ScopeError> resolve(const std::string& selected, const MountLookup& lookup, StartupDisk startupDisk)
{
    std::string real = realPath(selected);
    std::optional<MountInfo> mount = real.empty() ? std::nullopt : lookup(real);
    if (!mount)
        return std::unexpected(ScopeError::unreachable());
    if (FileSystemTypes::isVirtual(mount->fileSystemType))
        return std::unexpected(ScopeError::virtualFileSystem(mount->fileSystemType));
    if (!mount->isLocal || FileSystemTypes::isNetwork(mount->fileSystemType))
        return std::unexpected(ScopeError::networkVolume(mount->fileSystemType));
    // The real path, not the selection, is scanned: it is what the mount decision was made on.
    if (real != withoutTrailingSlashes(mount->mountPoint))
        return ScanScope { selected, real, SourceKind::folder, std::move(*mount) };
    bool isStartupDisk = real == "/" || real == dataVolumeMountPoint;
    if (!isStartupDisk || startupDisk == StartupDisk::singleVolume)
        return ScanScope { selected, real, SourceKind::volume, std::move(*mount) };
    return dataVolumeScope(selected, lookup);
}

std::expected<ScanScope, ScopeError> resolve(const std::string& selected)
{
    StartupDisk startupDisk = MountTable::hasSeparateDataVolume() ? StartupDisk::separateDataVolume : StartupDisk::singleVolume;
    return resolve(selected, defaultMountLookup, startupDisk);
}

std::optional<MountInfo> defaultMountLookup(const std::string& path)
{
    return MountTable::lookup(path);
}

std::string realPath(const std::string& path)
{
    char resolved[PATH_MAX];
    if (!path.empty() && ::realpath(path.c_str(), resolved) != nullptr)
        return resolved;
    return standardizedPath(path);
}

std::string standardizedPath(std::string_view path)
{
    if (path.empty())
        return {};
    std::string absolute;
    if (path.front() != '/') {
        char cwd[PATH_MAX];
        if (::getcwd(cwd, sizeof cwd) == nullptr)
            return {};
        absolute = std::string(cwd) + "/";
    }
    absolute += path;
    std::vector<std::string_view> parts;
    std::string_view rest = absolute;
    while (!rest.empty()) {
        std::size_t slash = rest.find('/');
        std::string_view part = rest.substr(0, slash);
        rest = slash == std::string_view::npos ? std::string_view {} : rest.substr(slash + 1);
        if (part.empty() || part == ".")
            continue;
        if (part == "..") {
            if (!parts.empty())
                parts.pop_back();
            continue;
        }
        parts.push_back(part);
    }
    std::string result;
    for (std::string_view part : parts)
        result.append("/").append(part);
    return result.empty() ? "/" : result;
}

std::string displayPath(std::string_view path)
{
    if (path == dataVolumeMountPoint)
        return "/";
    if (path.starts_with(dataVolumeMountPoint) && path.size() > dataVolumeMountPoint.size()
        && path[dataVolumeMountPoint.size()] == '/')
        return std::string(path.substr(dataVolumeMountPoint.size()));
    return std::string(path);
}

std::vector<Firmlink> readFirmlinks(const std::string& file)
{
    std::vector<Firmlink> table;
    std::ifstream stream(file, std::ios::binary);
    std::string line;
    while (std::getline(stream, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        std::size_t tab = line.find('\t');
        if (tab == std::string::npos || tab == 0 || tab + 1 == line.size())
            continue;
        table.push_back({ UnicodeNames::repaired(line.substr(0, tab)), UnicodeNames::repaired(line.substr(tab + 1)) });
    }
    return table;
}

const std::vector<Firmlink>& firmlinks()
{
    static const std::vector<Firmlink> table = readFirmlinks(std::string(firmlinkTable));
    return table;
}

std::optional<std::string> dataVolumePath(std::string_view path, std::span<const Firmlink> table)
{
    for (const Firmlink& link : table) {
        if (!UnicodeNames::hasPathPrefix(path, link.rootPath))
            continue;
        std::string_view below = UnicodeNames::dropPathPrefix(path, link.rootPath);
        std::string mapped = std::string(dataVolumeMountPoint) + "/" + link.dataPath;
        if (!below.empty())
            mapped.append("/").append(below);
        return mapped;
    }
    return std::nullopt;
}

}
