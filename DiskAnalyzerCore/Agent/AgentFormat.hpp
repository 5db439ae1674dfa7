#pragma once

#include "Agent/JSONValue.hpp"
#include "Scanning/TreeDate.hpp"
#include "Support/Phrases.hpp"

#include <functional>
#include <optional>
#include <string>

namespace tarnwick {

struct AgentResult;

// Small conventions shared by every command's answer.
namespace AgentFormat {

// ISO 8601 in UTC ("2026-11-21T06:30:00Z"), or null when unknown.
JSONValue isoDate(std::optional<Date> date);
using Phrases::isoDateText;
using Phrases::percent;
using Phrases::size;

// "1 item", "2 items".
std::string counted(std::int64_t count, std::string_view singular, std::string_view plural);

// Lists shrink until the answer fits 8 KB: make(n) builds the answer with the first n of
// count items. Returns the largest fitting answer, or none when not even the shortest fits.
std::optional<AgentResult> largestFitting(int count, const std::function<AgentResult(int shown)>& make);

// The last guard of the 8 KB limit, for every answer on its way out: result as it is when it
// fits, otherwise OUTPUT_TOO_LARGE (a failure's own message shortened in the middle first,
// so that its code and both ends of it still arrive).
AgentResult withinLimit(AgentResult result);

}

}
