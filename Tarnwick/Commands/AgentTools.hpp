#pragma once

#include "Agent/AgentRequest.hpp"
#include "Agent/AgentResult.hpp"
#include "DesktopHost.hpp"

#include "AppCommands.hpp"
#include "SnapshotAnswers.hpp"

namespace tarnwick {

class AppModel;
class HistoryRecorder;
class HistoryStore;
class MainExecutor;

// The app's command handlers. A request arrives on a connection's thread and is first
// checked by the tool's own parser, so that a request the tool would never have sent gets
// INVALID_REQUEST with the usage text instead of reaching a handler. Every command then runs
// on the main executor against the model the window shows, except that wait only looks in
// there now and then, so the scan it waits for can finish meanwhile, and the commands
// answered from the history take what the window shows from there and work on the
// connection's thread. Every answer fits 8 KB.
class AgentTools {
public:
    // store is the app's history, null when it couldn't be opened; recorder saves the scans
    // into it, so that wait also waits for the save and status tells when one failed.
    AgentTools(AppModel& model, MainExecutor& executor, HistoryStore* store = nullptr, const HistoryRecorder* recorder = nullptr);
    AgentResult handle(const AgentCommands::Request& request);
    // The window that a second start of the app brings to the front; none without a display.
    void setWindow(DesktopHost::Window* window) { m_window = window; }

private:
    AgentResult handleChecked(const AgentCommands::Request& request);
    AgentResult onMain(const AgentCommands::Request& request);
    AgentResult waitForScan(const AgentCommands::Request& request);
    AgentResult handOff(const AgentCommands::Request& request);
    WindowPresence bringWindowForward();
    Answered<ShowAnswer> withWindow(Answered<ShowAnswer> shown);
    SnapshotAnswers::Context snapshotContext() const;
    AppCommands::HistoryNotes historyNotes() const;

    AppModel& m_model;
    MainExecutor& m_executor;
    HistoryStore* m_store;
    const HistoryRecorder* m_recorder;
    DesktopHost::Window* m_window = nullptr;
};

}
