#include "Agent/AgentChannel.hpp"

#include "Agent/AgentCommands.hpp"
#include "Agent/AgentErrorCode.hpp"
#include "Agent/LineConnection.hpp"
#include "Platform/AppLauncher.hpp"
#include "Platform/CodeIdentity.hpp"
#include "Platform/UserFolders.hpp"

#include <thread>

namespace tarnwick::AgentChannel {

std::string socketPath()
{
    return UserFolders::dataFolder() + "/Tarnwick.sock";
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
    return { socketPath(), CodeIdentity::ownExecutablePath().value_or(std::string()), AppLauncher::startInBackground,
        std::move(answerWithoutApp), Retry {} };
}

AgentResult run(const AgentCommands::Request& request, const RunSetup& setup)
{
    if (std::optional<AgentResult> answer = send(request, setup.socketPath))
        return *answer;
    const AgentCommands::Command* command = AgentCommands::find(request.command);
    if (command == nullptr || !command->needsApp) {
        if (setup.answerWithoutApp)
            return setup.answerWithoutApp(request);
        return AgentResult::failure(AgentErrorCode::appNotRunning, AgentErrorCode::Messages::appNotRunning);
    }
    if (!setup.executable.empty() && setup.startApp && setup.startApp(setup.executable)) {
        for (int attempt = 0; attempt < setup.retry.attempts; ++attempt) {
            if (std::optional<AgentResult> answer = send(request, setup.socketPath))
                return *answer;
            std::this_thread::sleep_for(setup.retry.pause);
        }
    }
    return AgentResult::failure(AgentErrorCode::appNotRunning, AgentErrorCode::Messages::appNotRunning);
}

}
