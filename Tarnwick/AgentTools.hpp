#pragma once

#include "Agent/AgentRequest.hpp"
#include "Agent/AgentResult.hpp"

namespace tarnwick {

class AppModel;
class MainExecutor;

// The app's command handlers. A request arrives on a connection's thread; every command
// runs on the main executor against the model the window shows, except that wait only
// looks in there now and then, so the scan it waits for can finish meanwhile.
class AgentTools {
public:
    AgentTools(AppModel& model, MainExecutor& executor);
    AgentResult handle(const AgentCommands::Request& request);

private:
    AgentResult onMain(const AgentCommands::Request& request);
    AgentResult waitForScan(const AgentCommands::Request& request);

    AppModel& m_model;
    MainExecutor& m_executor;
};

}
