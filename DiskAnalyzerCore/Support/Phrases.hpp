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

}

}
