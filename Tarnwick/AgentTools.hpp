#pragma once

#include "Agent/AgentRequest.hpp"
#include "Agent/AgentResult.hpp"

#include "AppCommands.hpp"
#include "SnapshotAnswers.hpp"

namespace tarnwick {

class AppModel;
class HistoryRecorder;
class HistoryStore;
class MainExecutor;

// The app's command handlers. A request arrives on a connection's thread; every command
// runs on the main executor against the model the window shows, except that wait only
// looks in there now and then, so the scan it waits for can finish meanwhile, and the
// commands answered from the history take what the window shows from there and work on the
// connection's thread.
class AgentTools {
public:
    // store is the app's history, null when it couldn't be opened; recorder saves the scans
    // into it, so that wait also waits for the save and status tells when one failed.
    AgentTools(AppModel& model, MainExecutor& executor, HistoryStore* store = nullptr, const HistoryRecorder* recorder = nullptr);
    AgentResult handle(const AgentCommands::Request& request);

private:
    AgentResult onMain(const AgentCommands::Request& request);
    AgentResult waitForScan(const AgentCommands::Request& request);
    SnapshotAnswers::Context snapshotContext() const;
    AppCommands::HistoryNotes historyNotes() const;

    AppModel& m_model;
    MainExecutor& m_executor;
    HistoryStore* m_store;
    const HistoryRecorder* m_recorder;
};

}
