#pragma once

#include "MenuBar/MenuBarDisk.hpp"
#include "MenuBar/MenuBarSegment.hpp"
#include "MenuBar/MenuBarStyle.hpp"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

// The rule that turns the user's disks and the menu bar style into what the item draws.
namespace tarnwick::MenuBarItem {

// The "from 1 GB" of the settings: smaller changes since yesterday are not shown.
inline constexpr std::int64_t changeThreshold = 1'000'000'000;

// Each selected disk a segment (without its name), or the single disk that needs attention:
// among the alerted disks the fullest; else, when changes are shown, the one that changed
// most; else the fullest of all. The single segment names its disk when it was picked from
// several. A segment that would show nothing is left out.
std::vector<MenuBarSegment> segments(std::span<const MenuBarDisk> disks, const MenuBarStyle& style, std::int64_t changeThreshold);

// The disks a style selects, in the order given: chosen ones by identifier.
std::vector<MenuBarDisk> selected(std::span<const MenuBarDisk> disks, const MenuBarStyle::Disks& choice);

// The free share of a disk (available over capacity, within 0 and 1), absent when either is
// unknown or the capacity is below 1 byte.
std::optional<double> freeShare(const MenuBarDisk& disk);

// The short forms drawn in the item: "23 %", "120 GB", "+2.10 GB", "≈−1.20 GB".
std::string freeShareText(double share);
std::string changeText(std::int64_t change, bool uncertain);
// What a segment says in full, for the item's tooltip and menu:
// "System Disk: 23 % free, 120 GB free, +2.10 GB since yesterday".
std::string description(const MenuBarSegment& segment);

}
