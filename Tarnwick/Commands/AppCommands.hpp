#pragma once

#include "Agent/AgentRequest.hpp"
#include "Agent/AgentResult.hpp"
#include "AppModel.hpp"

namespace tarnwick::AppCommands {

// What status tells of the history besides the scan: why the latest snapshot couldn't be
// saved, and that a damaged index was rebuilt.
struct HistoryNotes {
    std::optional<std::string> saveProblem;
    std::optional<std::string> recovery;
};

// Each runs on the main executor against the model the window shows.
AgentResult status(const AppModel& model, const HistoryNotes& history = {});
AgentResult scan(AppModel& model, const AgentCommands::Request& request);
AgentResult rescan(AppModel& model);
AgentResult show(AppModel& model, const AgentCommands::Request& request);
AgentResult summary(const AppModel& model, const AgentCommands::Request& request);
AgentResult find(const AppModel& model, const AgentCommands::Request& request);

// The answer of a tool whose app isn't running.
AgentResult statusWithoutApp();

}
