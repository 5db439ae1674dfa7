#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace tarnwick {

// What the menu bar item knows of one disk.
struct MenuBarDisk {
    std::string id; // the volume's identifier, which stays the same across mounts
    std::string name;
    bool isDiskImage = false;
    std::optional<std::int64_t> capacity;
    std::optional<std::int64_t> available;
    std::optional<std::int64_t> change; // since yesterday's snapshot
    bool changeIsUncertain = false;
    bool isAlerted = false; // one of the disk's alerts is exceeded
    std::optional<int> number;
    // When yesterday's snapshot could not be read: the date of the one the change is from.
    std::optional<std::chrono::system_clock::time_point> changeSince;

    bool operator==(const MenuBarDisk&) const = default;
};

}
