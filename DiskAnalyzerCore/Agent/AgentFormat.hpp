#pragma once

#include "Agent/JSONValue.hpp"
#include "Scanning/TreeDate.hpp"
#include "Support/Phrases.hpp"

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

// The last guard of the 8 KB limit, for every answer on its way out: result as it is when it
// fits, otherwise OUTPUT_TOO_LARGE (a failure's own message shortened in the middle first,
// so that its code and both ends of it still arrive).
AgentResult withinLimit(AgentResult result);

}

}
