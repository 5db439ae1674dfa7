#include "Agent/LocalAnswer.hpp"

#include "Agent/AgentHelp.hpp"

namespace tarnwick::LocalAnswer {

namespace {

PrintedOutput usageError(const std::string& message)
{
    return { {}, message + "\n", ExitStatus::usage };
}

}

std::optional<PrintedOutput> forInvocation(const AgentCommands::Invocation& invocation, std::string_view tool)
{
    using Invocation = AgentCommands::Invocation;
    if (std::get_if<Invocation::Version>(&invocation.value))
        return PrintedOutput { AgentOutput::versionText() + "\n", {}, ExitStatus::success };
    if (const auto* help = std::get_if<Invocation::Help>(&invocation.value)) {
        std::expected<std::string, std::string> text = AgentHelp::forName(help->command, tool);
        if (!text)
            return usageError(text.error());
        return PrintedOutput { *text + "\n", {}, ExitStatus::success };
    }
    if (const auto* error = std::get_if<Invocation::UsageError>(&invocation.value))
        return usageError(error->message);
    const auto& request = std::get<Invocation::Run>(invocation.value).request;
    if (request.command == "skill") {
        OutputMode mode = request.json ? OutputMode::json : OutputMode::text;
        return AgentOutput::print(AgentResult::success(AgentHelp::skill(tool)), mode);
    }
    return std::nullopt;
}

}
