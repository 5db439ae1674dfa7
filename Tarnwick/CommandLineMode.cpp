#include "CommandLineMode.hpp"

#include "Agent/AgentChannel.hpp"
#include "Agent/AgentCommands.hpp"
#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentFormat.hpp"
#include "Agent/AgentOutput.hpp"
#include "Agent/LocalAnswer.hpp"
#include "Agent/ToolName.hpp"
#include "AppCommands.hpp"
#include "SnapshotAnswers.hpp"

#include <csignal>

namespace tarnwick::CommandLineMode {

namespace {

AgentResult answerWithoutApp(const AgentCommands::Request& request)
{
    try {
        if (request.command == "status")
            return AgentFormat::withinLimit(AppCommands::statusWithoutApp());
        return AgentFormat::withinLimit(SnapshotAnswers::answer(request));
    } catch (const std::exception& error) {
        return AgentResult::failure(AgentErrorCode::generic, "Tarnwick couldn't answer: " + std::string(error.what()));
    }
}

}

int run(const std::string& programPath, const std::vector<std::string>& words)
{
    std::signal(SIGPIPE, SIG_IGN);
    std::string tool = ToolName::current(programPath);
    AgentCommands::Invocation invocation = AgentCommands::parse(words);
    if (auto local = LocalAnswer::forInvocation(invocation, tool))
        return AgentOutput::write(*local);
    const auto& request = std::get<AgentCommands::Invocation::Run>(invocation.value).request;
    AgentResult result = AgentChannel::run(request, AgentChannel::defaultSetup(answerWithoutApp));
    return AgentOutput::write(AgentOutput::print(result, request.json ? OutputMode::json : OutputMode::text));
}

}
