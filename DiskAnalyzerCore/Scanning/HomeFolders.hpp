#pragma once

#include "Platform/MountInfo.hpp"

#include <optional>
#include <string_view>

namespace tarnwick::HomeFolders {

// A home folder sits directly in the "Users" folder at the top of a volume (or of the data
// volume), or on Linux directly in "/home", and is neither "Shared" nor hidden.
//
// A scan asks cheaply: isUsersFolder once per listed folder, isHomeFolderName per child.

bool isHomeFolderName(std::string_view name);
// Whether the children of folder are home folders, for a folder on the volume mounted at volumeMountPoint.
bool isUsersFolder(std::string_view folder, std::string_view volumeMountPoint);
bool isHomeFolder(std::string_view path, std::string_view volumeMountPoint);
// Finds the volume through the lookup; false when the parent cannot be looked up.
bool isHomeFolder(std::string_view path, const MountLookup& lookup);
// With the system's mount table.
bool isHomeFolder(std::string_view path);

// The home folder that is or holds path, judged by the fixed Users folders alone ("/Users",
// the data volume's, "/home"), for answers that must not consult the mounts.
std::optional<std::string_view> enclosingHomeFolder(std::string_view path);

}
