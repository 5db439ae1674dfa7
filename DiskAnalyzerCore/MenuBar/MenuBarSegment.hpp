#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace tarnwick {

// One disk as the menu bar item draws it; an absent value is not shown.
struct MenuBarSegment {
    std::string diskID;
    std::string name;
    bool showsName = false;
    std::optional<double> freeShare; // 0 to 1
    std::optional<std::int64_t> freeBytes;
    std::optional<std::int64_t> change;
    bool changeIsUncertain = false; // only with a shown change
    bool isAlerted = false;
    std::optional<int> number;
    std::optional<std::chrono::system_clock::time_point> changeSince; // only with a shown change, as MenuBarDisk's

    [[nodiscard]] bool showsNothing() const { return !freeShare && !freeBytes && !change; }
    bool operator==(const MenuBarSegment&) const = default;
};

}
