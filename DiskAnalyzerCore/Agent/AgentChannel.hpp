#pragma once

#include "Agent/AgentRequest.hpp"
#include "Agent/AgentResult.hpp"

#include <chrono>
#include <functional>
#include <optional>
#include <string>

// The tool's end of the command line: where the app's socket is, one request and its answer,
// and what to do when the app does not answer.
namespace tarnwick::AgentChannel {

// "Tarnwick.sock" in the user's data folder, where the app listens.
std::string socketPath();

// One request on a fresh connection: one line out, one line back. Absent when nobody answers
// at path (the app isn't running, or refused this program) or the answer is unreadable.
std::optional<AgentResult> send(const AgentCommands::Request& request, const std::string& path);

struct Retry {
    int attempts = 75;
    std::chrono::milliseconds pause { 200 };
};

struct RunSetup {
    std::string socketPath;
    std::string executable; // the app to start; the tool's own executable
    // Starts the app without bringing it to the front; true when it was started.
    std::function<bool(const std::string& executable)> startApp;
    // Answers the commands that don't need the app from the saved snapshots and settings.
    std::function<AgentResult(const AgentCommands::Request&)> answerWithoutApp;
    Retry retry;
};

// The setup of a real run: the channel's socket, this executable, the background launcher;
// answerWithoutApp is the caller's.
RunSetup defaultSetup(std::function<AgentResult(const AgentCommands::Request&)> answerWithoutApp);

// Asks the running app. When it does not answer, a command that works on the app's scan and
// window starts the app and asks again (75 times, 200 ms apart), failing with APP_NOT_RUNNING
// if it never answers; every other command is answered without the app.
AgentResult run(const AgentCommands::Request& request, const RunSetup& setup);

}
