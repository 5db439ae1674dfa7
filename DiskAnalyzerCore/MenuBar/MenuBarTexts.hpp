#pragma once

#include <string>
#include <string_view>

// What the menu bar item and its settings say, word for word, in one place.
namespace tarnwick::MenuBarTexts {

inline constexpr std::string_view freePercentOption = "Free space in percent";
inline constexpr std::string_view freeBytesOption = "Free space in gigabytes";
inline constexpr std::string_view changeOption = "Change since yesterday, from 1 GB";
inline constexpr std::string_view allDisksOption = "All disks";
inline constexpr std::string_view physicalDisksOption = "Physical disks, without disk images";
inline constexpr std::string_view chosenDisksOption = "These disks:";
inline constexpr std::string_view mostNotableOption
    = "The one that needs attention: a disk whose alert is exceeded, then the one that changed most, then the fullest";
inline constexpr std::string_view eachOption = "Each disk";
inline constexpr std::string_view noDisks = "No disks to show. Choose them with Tray Settings…";

// The words around a segment's values in its description.
inline constexpr std::string_view free = "free";
inline constexpr std::string_view sinceYesterday = "since yesterday";
// When yesterday's snapshot could not be read and an earlier one stood in.
inline std::string sinceInstead(const std::string& day)
{
    return "since " + day + " (yesterday's snapshot couldn't be read)";
}
inline constexpr std::string_view alerted = "an alert is exceeded";

}
