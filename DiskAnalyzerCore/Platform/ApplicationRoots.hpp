#pragma once

#include <string>
#include <vector>

namespace tarnwick {

// Where installed applications, their data and the system's name are found. Taken from the
// environment for a real run; tests point every field into a temporary folder.
struct ApplicationRoots {
    // The user's home folder, whose dot folders, ".config", ".local/share", ".cache",
    // ".var/app" and "snap" hold the data of applications.
    std::string homeFolder;
    // Folders of desktop entries, the most important first (an earlier entry hides a later
    // one of the same id): $XDG_DATA_HOME/applications, then each of $XDG_DATA_DIRS, then
    // the exports of the Flatpak installations and the desktop entries of snaps.
    std::vector<std::string> applicationFolders;
    // Flatpak installations, each holding "app/ID" and "runtime/ID".
    std::vector<std::string> flatpakInstallations;
    // Where snaps are mounted, one folder per snap name.
    std::vector<std::string> snapFolders;
    // Where the snap packages themselves are kept, as files named "NAME_REVISION.snap".
    std::vector<std::string> snapPackageFolders;
    // Files that may describe the operating system, the first readable one counts.
    std::vector<std::string> osReleaseFiles;

    // From $HOME, $XDG_DATA_HOME and $XDG_DATA_DIRS with their usual defaults.
    static ApplicationRoots current();
    // The same layout below a home folder and a system folder standing in for "/", for tests
    // and for looking at another machine's files.
    static ApplicationRoots under(const std::string& homeFolder, const std::string& systemFolder);
};

}
