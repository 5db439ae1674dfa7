#include "SnapshotAnswers.hpp"

#include "Agent/AgentErrorCode.hpp"

#include <array>

namespace tarnwick::SnapshotAnswers {

namespace {

constexpr std::array<std::string_view, 7> commands { "disks", "changes", "history", "types", "alerts", "add-alert", "remove-alert" };

}

bool handles(std::string_view command)
{
    for (std::string_view name : commands) {
        if (name == command)
            return true;
    }
    return false;
}

AgentResult answer(const AgentCommands::Request& request)
{
    // The history and alert stores are not part of this build yet.
    return AgentResult::failure(AgentErrorCode::generic, request.command + " isn't available in this version of Tarnwick yet.");
}

}
