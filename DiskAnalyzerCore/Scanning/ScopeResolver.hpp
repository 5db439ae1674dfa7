#pragma once

#include "Platform/MountInfo.hpp"
#include "Scanning/ScanScope.hpp"
#include "Scanning/ScopeError.hpp"

#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

// One line of the firmlink table: a top-level path of the root served by the data volume.
struct Firmlink {
    std::string rootPath; // as seen from "/", e.g. "/Users"
    std::string dataPath; // relative to the data volume, e.g. "Users"

    bool operator==(const Firmlink&) const = default;
};

// Turns the location the user chose into what the scanner should walk, refusing sources
// that are not local disks.
namespace ScopeResolver {

inline constexpr std::string_view dataVolumeMountPoint = "/System/Volumes/Data";
inline constexpr std::string_view firmlinkTable = "/usr/share/firmlinks";

enum class StartupDisk {
    singleVolume,       // "/" is an ordinary volume
    separateDataVolume, // a read-only system volume on "/", the user's data at dataVolumeMountPoint
};

std::expected<ScanScope, ScopeError> resolve(const std::string& selected, const MountLookup& lookup, StartupDisk startupDisk);
// With the system's mount table and startup disk layout.
std::expected<ScanScope, ScopeError> resolve(const std::string& selected);
std::optional<MountInfo> defaultMountLookup(const std::string& path);

// realpath of the path (every link resolved), or its standardized form when that fails.
std::string realPath(const std::string& path);
// Absolute, without ".", ".." and repeated or trailing slashes; only the text is looked at.
std::string standardizedPath(std::string_view path);

// Data-volume paths under the names people know: the data volume's Users folder is "/Users".
std::string displayPath(std::string_view path);

// One firmlink a line, the two paths separated by a tab; a missing table has no firmlinks.
std::vector<Firmlink> readFirmlinks(const std::string& file);
// The system's table, read on first use.
const std::vector<Firmlink>& firmlinks();
// Where a path of the root lies on the data volume, when a firmlink serves it from there.
std::optional<std::string> dataVolumePath(std::string_view path, std::span<const Firmlink> table);

}

}
