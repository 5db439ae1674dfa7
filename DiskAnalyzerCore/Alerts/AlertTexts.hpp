#pragma once

#include "Support/PlatformPhrases.hpp"

#include <string>
#include <string_view>

// What the alerts say to users, word for word, in one place. The phrases that name something of
// the desktop system come from PlatformPhrases.
namespace tarnwick::AlertTexts {

inline constexpr std::string_view rules
    = "Tarnwick notifies the user when a disk gets fuller than a percentage, or when a folder gets larger than a size "
      "or a share of its disk, or grows by more than a size over a period. A disk is checked every few minutes while "
      "Tarnwick runs; a folder with every snapshot of its disk.";

inline std::string oneAlertPerKind()
{
    return "A place has one alert of each kind, and one growth alert per period: setting it again changes the limit. "
           "The user gets " + std::string(PlatformPhrases::notification)
        + " when the limit is passed, and again only after it was below.";
}

// How a disk's used space is counted: the capacity minus what the file manager offers as free.
inline std::string diskUsedCounting()
{
    return "as " + std::string(PlatformPhrases::fileManager) + " counts it";
}

inline constexpr std::string_view diskTakesDiskUsed = "A disk takes --fuller-than PERCENT.";
inline constexpr std::string_view folderTakesFolderLimits
    = "Folder alerts measure folders and packages from snapshots. Give a folder, or use --fuller-than for a disk.";
inline constexpr std::string_view notFound = "No alert has that ID or place. Run alerts for the list.";

// Readings.
inline constexpr std::string_view diskNotMounted = "The disk isn't mounted";
inline constexpr std::string_view notMeasuredYet = "Not measured yet: it is measured with the next snapshot of its disk";
// A share alert's folder is measured, but its disk's capacity is on no record.
inline constexpr std::string_view capacityUnknown = "Not measured yet: the disk's capacity isn't known";
inline constexpr std::string_view uncertainSuffix = ", uncertain: one of the scans didn't read the folder fully";

inline std::string dailySnapshotOff()
{
    return "The daily snapshot is off: Tarnwick checks alerts only while it is open. Suggest turning on Tarnwick → "
           "Take a Snapshot of Disks Daily, which keeps it " + std::string(PlatformPhrases::statusArea) + ".";
}

// The pieces that follow the place's name in curly quotes in a notification, before the limit.
inline constexpr std::string_view diskUsedPiece = "” is more than ";
inline constexpr std::string_view sizePiece = "” is larger than ";
inline constexpr std::string_view sharePiece = "” takes more than ";
inline constexpr std::string_view growthPiece = "” grew by more than ";

// Delivery problems go to the log only, under the category "alerts".
inline constexpr std::string_view logCategory = "alerts";
inline std::string notDelivered(std::string_view reason)
{
    return "notification not delivered: " + std::string(reason);
}
inline constexpr std::string_view turnedOffByUser = "notifications turned off by the user";
inline std::string notAllowed(std::string_view reason)
{
    return "notifications not allowed: " + std::string(reason);
}

}
