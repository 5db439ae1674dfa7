#include "Scanning/InaccessibleArea.hpp"

#include "Scanning/HomeFolders.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "Support/UnicodeNames.hpp"

#include <array>

namespace tarnwick::InaccessibleAreas {

namespace {

struct AreaFolder {
    std::string_view homeRelative;
    InaccessibleArea area;
};

constexpr std::array<AreaFolder, 10> areaFolders { {
    { "Desktop", InaccessibleArea::desktop },
    { "Documents", InaccessibleArea::documents },
    { "Downloads", InaccessibleArea::downloads },
    { "Library/Mobile Documents", InaccessibleArea::iCloudDrive },
    { "Library/CloudStorage", InaccessibleArea::cloudStorage },
    { "Library/Containers", InaccessibleArea::otherApps },
    { "Library/Group Containers", InaccessibleArea::otherApps },
    // Flatpak and Snap keep each application's own data here, as containers do on macOS.
    { ".var/app", InaccessibleArea::otherApps },
    { "snap", InaccessibleArea::otherApps },
    { "Library/Messages", InaccessibleArea::protectedByMacOS },
} };

bool countsByFolder(InaccessibleArea area)
{
    return area == InaccessibleArea::otherApps || area == InaccessibleArea::cloudStorage;
}

// The area folder's child that holds path ("…/Containers/com.example.app"), or path itself
// when it is the area folder.
std::string placeBelow(const std::string& path, const std::string& areaFolder)
{
    std::string_view below = UnicodeNames::dropPathPrefix(path, areaFolder);
    if (below.empty())
        return path;
    return areaFolder + "/" + std::string(below.substr(0, below.find('/')));
}

// displayPath only drops a prefix, so a place found in the shown form is turned back by
// putting that prefix in front again.
std::string inOriginalForm(std::string_view path, const std::string& shown, const std::string& shownPlace)
{
    if (shown.size() >= path.size() || shown == "/")
        return shownPlace;
    return std::string(path.substr(0, path.size() - shown.size())) + shownPlace;
}

}

Placement place(std::string_view path, std::string_view home)
{
    std::string shown = ScopeResolver::displayPath(path);
    std::string shownHome = ScopeResolver::displayPath(home);
    if (!home.empty() && UnicodeNames::hasPathPrefix(shown, shownHome)) {
        for (const AreaFolder& folder : areaFolders) {
            std::string areaPath = shownHome == "/" ? "/" + std::string(folder.homeRelative)
                                                    : shownHome + "/" + std::string(folder.homeRelative);
            if (!UnicodeNames::hasPathPrefix(shown, areaPath))
                continue;
            if (!countsByFolder(folder.area))
                return { folder.area, std::string(path) };
            return { folder.area, inOriginalForm(path, shown, placeBelow(shown, areaPath)) };
        }
        return { InaccessibleArea::noPermission, std::string(path) };
    }
    if (HomeFolders::enclosingHomeFolder(shown))
        return { InaccessibleArea::noPermission, std::string(path) };
    return { InaccessibleArea::system, std::string(path) };
}

}
