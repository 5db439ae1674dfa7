#pragma once

#include "Agent/AgentRequest.hpp"
#include "Agent/AgentResult.hpp"

#include <string_view>

namespace tarnwick::SnapshotAnswers {

// The commands answered from the saved snapshots and settings, the same in the app and,
// while it isn't running, in the tool.
bool handles(std::string_view command);
AgentResult answer(const AgentCommands::Request& request);

}
