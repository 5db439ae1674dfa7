#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarnwick {

// Where an unreadable place lies, as far as the access help is concerned: the user folders
// and app data that can be granted, the places nobody can grant, and the rest.
enum class InaccessibleArea : std::uint8_t {
    desktop,
    documents,
    downloads,
    iCloudDrive,
    cloudStorage,
    otherApps,
    protectedByMacOS,
    system,
    noPermission,
};

namespace InaccessibleAreas {

struct Placement {
    InaccessibleArea area = InaccessibleArea::noPermission;
    // What the place counts as: the app's container or the cloud folder for those areas
    // (several unreadable items in one app are one app), else the path itself.
    std::string place;
};

// path and home are absolute; data-volume paths and familiar ones compare alike, and the
// place comes back in the form path has.
// Inside home: its user folders and app data by their home-relative folders, the rest
// noPermission. Outside: inside another user's home folder noPermission, else system.
Placement place(std::string_view path, std::string_view home);

}

}
