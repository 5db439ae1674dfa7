#pragma once

#include "Agent/JSONValue.hpp"
#include "Scanning/TreeDate.hpp"

#include <functional>
#include <optional>
#include <string>

namespace tarnwick {

struct AgentResult;

// Small conventions shared by every command's answer.
namespace AgentFormat {

// ISO 8601 in UTC ("2026-11-21T06:30:00Z"), or null when unknown.
JSONValue isoDate(std::optional<Date> date);
std::string isoDateText(Date date);
// A size in decimal units, with "≥" when it is only a lower bound.
std::string size(std::int64_t bytes, bool lowerBound = false);
// A share as a whole percentage, "<1 %" for small non-zero shares.
std::string percent(double share);

// Lists shrink until the answer fits 8 KB: make(n) builds the answer with the first n of
// count items. Returns the largest fitting answer, or none when not even the shortest fits.
std::optional<AgentResult> largestFitting(int count, const std::function<AgentResult(int shown)>& make);

}

}
