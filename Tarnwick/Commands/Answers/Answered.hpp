#pragma once

#include "Agent/AgentResult.hpp"

#include <expected>

namespace tarnwick {

// What a command handler returns: the facts of its answer, typed, for the renderer to put
// into words and JSON; or a failure, already in its own words.
template <class Answer>
using Answered = std::expected<Answer, AgentResult>;

}
