#pragma once

#include "Agent/AgentCommands.hpp"
#include "Agent/AgentOutput.hpp"

#include <optional>
#include <string_view>

// What the tool answers by itself, before any socket: version, help, usage errors and the
// skill text. tool is the name the tool is shown by.
namespace tarnwick::LocalAnswer {

// Absent for a request that goes to the app or the saved snapshots.
std::optional<PrintedOutput> forInvocation(const AgentCommands::Invocation& invocation, std::string_view tool);

}
