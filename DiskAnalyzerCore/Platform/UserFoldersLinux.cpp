#include "Platform/UserFolders.hpp"

#include <cerrno>
#include <cstdlib>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnwick::UserFolders {

namespace {

std::string homeFolder()
{
    const char* home = std::getenv("HOME");
    if (home != nullptr && home[0] == '/')
        return home;
    const passwd* entry = ::getpwuid(::getuid());
    if (entry != nullptr && entry->pw_dir != nullptr)
        return entry->pw_dir;
    return "/";
}

bool isFolder(const std::string& path)
{
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// The XDG variable when it holds an absolute path, else the fallback below the home folder;
// then Tarnwick's own folder inside.
std::string tarnwickFolder(const char* variable, const char* homeRelative)
{
    const char* value = std::getenv(variable);
    std::string base = value != nullptr && value[0] == '/' ? std::string(value) : homeFolder() + homeRelative;
    while (base.size() > 1 && base.back() == '/')
        base.pop_back();
    return (base == "/" ? "" : base) + "/tarnwick";
}

}

std::string dataFolder()
{
    return tarnwickFolder("XDG_DATA_HOME", "/.local/share");
}

std::string configFolder()
{
    return tarnwickFolder("XDG_CONFIG_HOME", "/.config");
}

std::string cacheFolder()
{
    return tarnwickFolder("XDG_CACHE_HOME", "/.cache");
}

bool ensureFolder(const std::string& path)
{
    if (path.empty())
        return false;
    // Each component in turn from the top, without recursion.
    for (std::size_t slash = path.find('/', 1); ; slash = path.find('/', slash + 1)) {
        std::string part = path.substr(0, slash);
        if (::mkdir(part.c_str(), 0700) != 0 && errno != EEXIST)
            return false;
        if (slash == std::string::npos)
            break;
    }
    return isFolder(path);
}

}
