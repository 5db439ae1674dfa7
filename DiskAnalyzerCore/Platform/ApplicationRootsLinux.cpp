#include "Platform/ApplicationRoots.hpp"

#include <cstdlib>
#include <pwd.h>
#include <string_view>
#include <unistd.h>

namespace tarnwick {

namespace {

std::string environment(const char* name)
{
    const char* value = std::getenv(name);
    return value ? std::string(value) : std::string();
}

std::string homeFromEnvironment()
{
    std::string home = environment("HOME");
    if (!home.empty() && home.front() == '/')
        return home;
    // A service started without HOME still has a home in the password database.
    if (const passwd* entry = getpwuid(getuid()); entry && entry->pw_dir)
        return entry->pw_dir;
    return "/";
}

std::vector<std::string> splitColons(std::string_view text)
{
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (start <= text.size()) {
        std::size_t end = text.find(':', start);
        if (end == std::string_view::npos)
            end = text.size();
        // Relative entries are invalid in the XDG lists and are ignored.
        if (end > start && text[start] == '/')
            parts.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

ApplicationRoots layout(const std::string& home, const std::string& dataHome, const std::vector<std::string>& dataDirs,
    const std::string& system)
{
    ApplicationRoots roots;
    roots.homeFolder = home;
    roots.applicationFolders.push_back(dataHome + "/applications");
    for (const std::string& folder : dataDirs)
        roots.applicationFolders.push_back(folder + "/applications");
    const std::string userFlatpak = dataHome + "/flatpak";
    const std::string systemFlatpak = system + "/var/lib/flatpak";
    // Listed again even when the data dirs already name them: an id seen twice keeps its first entry.
    roots.applicationFolders.push_back(userFlatpak + "/exports/share/applications");
    roots.applicationFolders.push_back(systemFlatpak + "/exports/share/applications");
    roots.applicationFolders.push_back(system + "/var/lib/snapd/desktop/applications");
    roots.flatpakInstallations = { userFlatpak, systemFlatpak };
    roots.snapFolders = { system + "/snap" };
    roots.snapPackageFolders = { system + "/var/lib/snapd/snaps" };
    roots.osReleaseFiles = { system + "/etc/os-release", system + "/usr/lib/os-release" };
    return roots;
}

}

ApplicationRoots ApplicationRoots::current()
{
    std::string home = homeFromEnvironment();
    std::string dataHome = environment("XDG_DATA_HOME");
    if (dataHome.empty() || dataHome.front() != '/')
        dataHome = home + "/.local/share";
    std::vector<std::string> dataDirs = splitColons(environment("XDG_DATA_DIRS"));
    if (dataDirs.empty())
        dataDirs = { "/usr/local/share", "/usr/share" };
    return layout(home, dataHome, dataDirs, "");
}

ApplicationRoots ApplicationRoots::under(const std::string& homeFolder, const std::string& systemFolder)
{
    return layout(homeFolder, homeFolder + "/.local/share", { systemFolder + "/usr/local/share", systemFolder + "/usr/share" },
        systemFolder);
}

}
