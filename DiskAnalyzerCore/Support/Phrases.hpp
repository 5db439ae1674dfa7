#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace tarnwick {

// The small phrases every surface uses alike (the command line, the tray, the window, the
// history's answers), so a size or a share reads the same wherever it is shown.
namespace Phrases {

// A size in decimal units, with "≥" when it is only a lower bound.
std::string size(std::int64_t bytes, bool lowerBound = false);
// A share as a whole percentage, "<1 %" for small non-zero shares.
std::string percent(double share);
// An on-disk / size ratio with two decimals, or "unknown".
std::string ratio(const std::optional<double>& ratio);
// ISO 8601 in UTC ("2026-11-21T06:30:00Z").
std::string isoDateText(std::chrono::system_clock::time_point date);
// A change with its sign: "+1.20 GB", "-300 MB", "≈+40.0 MB" when one of the two scans
// didn't read all of it.
std::string signedSize(std::int64_t change, bool uncertain = false);
// Local time as people read it, "2024-05-31 18:02", and the day alone, "2024-05-31".
std::string localTime(std::chrono::system_clock::time_point date);
std::string localDay(std::chrono::system_clock::time_point date);

}

}
