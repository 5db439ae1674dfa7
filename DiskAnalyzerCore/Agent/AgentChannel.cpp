#include "Agent/AgentChannel.hpp"

#include "Agent/AgentCommands.hpp"
#include "Agent/AgentErrorCode.hpp"
#include "Agent/LineConnection.hpp"
#include "Platform/AppLauncher.hpp"
#include "Platform/CodeIdentity.hpp"
#include "Platform/FileLock.hpp"
#include "Platform/UserFolders.hpp"

#include <thread>

namespace tarnwick::AgentChannel {

namespace {

// Starts the app and asks until it answers. Only one tool at a time gets past the start lock;
// the others wait there and then find the app that one started listening.
std::optional<AgentResult> startAndAsk(const AgentCommands::Request& request, const RunSetup& setup)
{
    UserFolders::ensureFolder(UserFolders::dataFolder());
    // Without the lock (its file cannot be made, or the wait ran out) the tool starts an app
    // all the same: the app's own lock lets only one of them run.
    std::unique_ptr<FileLock> starting = FileLock::takeWithin(setup.startLockPath, setup.retry.startLockWait);
    if (std::optional<AgentResult> answer = send(request, setup.socketPath))
        return answer;
    if (setup.executable.empty() || !setup.startApp || !setup.startApp(setup.executable))
        return std::nullopt;
    for (int attempt = 0; attempt < setup.retry.attempts; ++attempt) {
        if (std::optional<AgentResult> answer = send(request, setup.socketPath))
            return answer;
        std::this_thread::sleep_for(setup.retry.pause);
    }
    return std::nullopt;
}

}

std::string socketPath()
{
    return UserFolders::dataFolder() + "/Tarnwick.sock";
}

std::string appLockPath()
{
    return UserFolders::dataFolder() + "/Tarnwick.lock";
}

std::string startLockPath()
{
    return UserFolders::dataFolder() + "/Tarnwick.start.lock";
}

std::optional<AgentResult> send(const AgentCommands::Request& request, const std::string& path)
{
    std::unique_ptr<LineConnection> connection = LineConnection::connect(path);
    if (!connection || !connection->writeLine(request.encoded()))
        return std::nullopt;
    std::optional<std::string> line = connection->readLine();
    if (!line)
        return std::nullopt;
    return AgentResult::decoded(*line);
}

RunSetup defaultSetup(std::function<AgentResult(const AgentCommands::Request&)> answerWithoutApp)
{
    return { socketPath(), startLockPath(), CodeIdentity::ownExecutablePath().value_or(std::string()), AppLauncher::startInBackground,
        std::move(answerWithoutApp), Retry {} };
}

std::optional<AgentResult> askStartingApp(const AgentCommands::Request& request, const RunSetup& setup)
{
    if (std::optional<AgentResult> answer = send(request, setup.socketPath))
        return answer;
    return startAndAsk(request, setup);
}

std::optional<AgentResult> askRunningApp(const AgentCommands::Request& request, const std::string& path, const Retry& retry)
{
    for (int attempt = 0; attempt < retry.attempts; ++attempt) {
        if (std::optional<AgentResult> answer = send(request, path))
            return answer;
        std::this_thread::sleep_for(retry.pause);
    }
    return std::nullopt;
}

AgentResult run(const AgentCommands::Request& request, const RunSetup& setup)
{
    if (std::optional<AgentResult> answer = send(request, setup.socketPath))
        return *answer;
    const AgentCommands::Command* command = AgentCommands::find(request.command);
    if (command == nullptr || command->route != AgentCommands::Route::app) {
        if (setup.answerWithoutApp)
            return setup.answerWithoutApp(request);
        return AgentResult::failure(AgentErrorCode::appNotRunning, AgentErrorCode::Messages::appNotRunning);
    }
    if (std::optional<AgentResult> answer = startAndAsk(request, setup))
        return *answer;
    return AgentResult::failure(AgentErrorCode::appNotRunning, AgentErrorCode::Messages::appNotRunning);
}

}
