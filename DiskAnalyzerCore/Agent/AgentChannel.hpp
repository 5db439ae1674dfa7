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
// "Tarnwick.lock" beside it: the running app holds it for its whole life, and only the
// holder may create or remove the socket file. A second app start finds it held and hands
// its request to the app that holds it.
std::string appLockPath();
// "Tarnwick.start.lock": held by the one tool that is starting the app, so that tools run at
// the same moment start one app between them.
std::string startLockPath();

// One request on a fresh connection: one line out, one line back. Absent when nobody answers
// at path (the app isn't running, or refused this program) or the answer is unreadable.
std::optional<AgentResult> send(const AgentCommands::Request& request, const std::string& path);

struct Retry {
    int attempts = 75;
    std::chrono::milliseconds pause { 200 };
    // A tool that waits for another to start the app waits out that one's whole wait for the
    // first answer, and a little more.
    std::chrono::milliseconds startLockWait { 20'000 };
};

struct RunSetup {
    std::string socketPath;
    std::string startLockPath;
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

// The app's answer, starting the app first when it does not answer (as run below does for a
// command that needs the app); absent when it never answers.
std::optional<AgentResult> askStartingApp(const AgentCommands::Request& request, const RunSetup& setup);
// The answer of an app known to run (it holds the app lock) that may not listen yet: asked
// up to retry.attempts times; absent when it never answers.
std::optional<AgentResult> askRunningApp(const AgentCommands::Request& request, const std::string& path, const Retry& retry);

// Asks the running app. When it does not answer, a command that works on the app's scan and
// window starts the app and asks again (75 times, 200 ms apart), failing with APP_NOT_RUNNING
// if it never answers; every other command is answered without the app. Of the tools that
// find no app at the same moment, one starts it while the others wait for it to answer.
AgentResult run(const AgentCommands::Request& request, const RunSetup& setup);

}
