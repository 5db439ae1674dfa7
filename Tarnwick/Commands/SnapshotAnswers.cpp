#include "SnapshotAnswers.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Answers/AnswerRenderer.hpp"
#include "SnapshotCommands.hpp"

#include <array>
#include <utility>

namespace tarnwick::SnapshotAnswers {

namespace {

using Handler = AgentResult (*)(const AgentCommands::Request&, const Context&);

template <auto handler>
AgentResult rendered(const AgentCommands::Request& request, const Context& context)
{
    return AnswerRenderer::rendered(handler(request, context));
}

constexpr std::array<std::pair<std::string_view, Handler>, 8> handlers { {
    { "disks", rendered<SnapshotCommands::disks> },
    { "changes", rendered<SnapshotCommands::changes> },
    { "history", rendered<SnapshotCommands::history> },
    { "types", rendered<SnapshotCommands::types> },
    { "alerts", rendered<SnapshotCommands::alerts> },
    { "add-alert", rendered<SnapshotCommands::addAlert> },
    { "remove-alert", rendered<SnapshotCommands::removeAlert> },
    { "metrics", rendered<SnapshotCommands::metrics> },
} };

}

AgentResult answer(const AgentCommands::Request& request, const Context& context)
{
    for (const auto& [name, handler] : handlers) {
        if (name == request.command)
            return handler(request, context);
    }
    return AgentResult::failure(AgentErrorCode::unknownCommand, "Tarnwick has no command " + request.command + ".");
}

}
