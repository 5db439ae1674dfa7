#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// What the history shows people, in one place. Sizes go through ByteFormat.
namespace tarnwick::HistoryTexts {

inline constexpr std::string_view periodRule
    = "The current scan is compared with the day snapshot at the start of this period, or the earliest one when the history is shorter.";

inline constexpr std::string_view clearTitle = "Clear the history of scans?";
// "Tarnwick deletes what it kept of earlier scans (12.3 MB), including ..."
std::string clearExplanation(std::int64_t storedBytes);

inline constexpr std::string_view dayOfHistoryPrefix = "A day of history takes about ";
// "A day of history takes about 1.20 MB"
std::string dayOfHistory(std::int64_t bytes);

inline constexpr std::string_view forecastOpening = "If space keeps going as it did from ";
inline constexpr std::string_view forecastRunOut = " available run out in about ";
inline constexpr std::string_view forecastBeyondYear = "At this pace, room for more than a year.";

inline constexpr std::string_view zoomedScaleExplanation = "Zoomed by default while the disk is nearly full or nearly empty.";

}
