#include "CommandLineMode.hpp"

#include "Agent/AgentChannel.hpp"
#include "Agent/AgentCommands.hpp"
#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentFormat.hpp"
#include "Agent/AgentOutput.hpp"
#include "Agent/LocalAnswer.hpp"
#include "Agent/ToolName.hpp"
#include "AppCommands.hpp"
#include "Answers/AnswerRenderer.hpp"
#include "SnapshotAnswers.hpp"

#include <csignal>

namespace tarnwick::CommandLineMode {

namespace {

AgentResult answerHere(const AgentCommands::Request& request)
{
    try {
        if (request.command == "status")
            return AnswerRenderer::rendered(AppCommands::statusWithoutApp());
        return SnapshotAnswers::answer(request);
    } catch (const std::exception& error) {
        return AgentResult::failure(AgentErrorCode::generic, "Tarnwick couldn't answer: " + std::string(error.what()));
    }
}

AgentResult answerWithoutApp(const AgentCommands::Request& request)
{
    return AgentFormat::withinLimit(answerHere(request));
}

}

int run(const std::string& programPath, const std::vector<std::string>& words)
{
    std::signal(SIGPIPE, SIG_IGN);
    // Past a file size limit a write fails with EFBIG and is told like any failed write,
    // rather than killing the tool half-way through a file.
    std::signal(SIGXFSZ, SIG_IGN);
    std::string tool = ToolName::current(programPath);
    AgentCommands::Invocation invocation = AgentCommands::parse(words);
    if (auto local = LocalAnswer::forInvocation(invocation, tool))
        return AgentOutput::write(*local);
    const auto& request = std::get<AgentCommands::Invocation::Run>(invocation.value).request;
    OutputMode mode = request.json ? OutputMode::json : OutputMode::text;
    // What the tool answers alone (the metrics a scraper or a cron job reads): here, from the
    // files, however large, and never by starting the app.
    const AgentCommands::Command* command = AgentCommands::find(request.command);
    if (command && command->route == AgentCommands::Route::tool)
        return AgentOutput::write(AgentOutput::print(answerHere(request), mode));
    AgentResult result = AgentChannel::run(request, AgentChannel::defaultSetup(answerWithoutApp));
    return AgentOutput::write(AgentOutput::print(result, mode));
}

}
