#include "Scanning/HomeFolders.hpp"

#include "Platform/MountTable.hpp"
#include "Support/UnicodeNames.hpp"

#include <array>
#include <string>

namespace tarnwick::HomeFolders {

namespace {

constexpr std::string_view usersName = "Users";
constexpr std::array<std::string_view, 3> fixedUsersFolders { "/Users", "/System/Volumes/Data/Users", "/home" };

std::string_view withoutTrailingSlashes(std::string_view path)
{
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

std::string_view parentOf(std::string_view path)
{
    path = withoutTrailingSlashes(path);
    std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos)
        return {};
    return slash == 0 ? path.substr(0, 1) : path.substr(0, slash);
}

std::string_view lastComponent(std::string_view path)
{
    path = withoutTrailingSlashes(path);
    std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

}

bool isHomeFolderName(std::string_view name)
{
    return !name.empty() && name != "Shared" && name.front() != '.' && name != "..";
}

bool isUsersFolder(std::string_view folder, std::string_view volumeMountPoint)
{
    folder = withoutTrailingSlashes(folder);
    for (std::string_view fixed : fixedUsersFolders) {
        if (folder == fixed)
            return true;
    }
    return parentOf(folder) == withoutTrailingSlashes(volumeMountPoint) && lastComponent(folder) == usersName;
}

bool isHomeFolder(std::string_view path, std::string_view volumeMountPoint)
{
    std::string_view parent = parentOf(path);
    return !parent.empty() && isUsersFolder(parent, volumeMountPoint) && isHomeFolderName(lastComponent(path));
}

bool isHomeFolder(std::string_view path, const MountLookup& lookup)
{
    std::string_view parent = parentOf(path);
    if (parent.empty() || !isHomeFolderName(lastComponent(path)))
        return false;
    std::optional<MountInfo> mount = lookup(std::string(parent));
    return mount && isHomeFolder(path, mount->mountPoint);
}

bool isHomeFolder(std::string_view path)
{
    return isHomeFolder(path, MountTable::lookup);
}

std::optional<std::string_view> enclosingHomeFolder(std::string_view path)
{
    for (std::string_view users : fixedUsersFolders) {
        if (!UnicodeNames::hasPathPrefix(path, users))
            continue;
        std::string_view below = UnicodeNames::dropPathPrefix(path, users);
        std::string_view name = below.substr(0, below.find('/'));
        if (!isHomeFolderName(name))
            return std::nullopt;
        return path.substr(0, static_cast<std::size_t>(name.data() + name.size() - path.data()));
    }
    return std::nullopt;
}

}
