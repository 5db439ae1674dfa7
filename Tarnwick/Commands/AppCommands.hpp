#pragma once

#include "Agent/AgentRequest.hpp"
#include "Agent/AgentResult.hpp"
#include "AppModel.hpp"

namespace tarnwick::AppCommands {

// Each runs on the main executor against the model the window shows.
AgentResult status(const AppModel& model);
AgentResult scan(AppModel& model, const AgentCommands::Request& request);
AgentResult rescan(AppModel& model);
AgentResult show(AppModel& model, const AgentCommands::Request& request);
AgentResult summary(const AppModel& model, const AgentCommands::Request& request);
AgentResult find(const AppModel& model, const AgentCommands::Request& request);

// The answer of a tool whose app isn't running.
AgentResult statusWithoutApp();

}
