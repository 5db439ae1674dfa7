#include "AppCommands.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "AgentMessages.hpp"
#include "AgentPlaces.hpp"
#include "Classification/ColorMode.hpp"
#include "Scanning/ScopeResolver.hpp"


namespace tarnwick::AppCommands {

namespace {

std::optional<std::string> nodePath(const ScanTree& tree, std::optional<NodeID> node)
{
    if (!node)
        return std::nullopt;
    return ScopeResolver::displayPath(tree.path(*node));
}

}

StatusAnswer status(const AppModel& model, const HistoryNotes& history)
{
    StatusAnswer answer;
    if (const auto& running = model.runningScan()) {
        auto progress = running->scanner->progress()->state();
        answer.scanning = StatusAnswer::Scanning { ScopeResolver::displayPath(running->scope.scanRoot),
            static_cast<std::int64_t>(progress.itemCount), progress.currentPath };
    }
    if (const auto& result = model.result()) {
        const ScanTree& tree = *result->tree;
        answer.scanned = StatusAnswer::Scanned {
            .root = ScopeResolver::displayPath(tree.rootPath()),
            .bytes = tree.allocatedSize(NodeID::root()),
            .incomplete = tree.isIncomplete(NodeID::root()),
            .inside = static_cast<std::int64_t>(tree.childCount(NodeID::root())),
            .inAll = static_cast<std::int64_t>(tree.count() - 1),
            .finishedAt = result->finishedAt,
            .openFolder = *nodePath(tree, model.openFolder()),
            .selection = nodePath(tree, model.selection()),
        };
    }
    if (const auto& failure = model.lastFailure())
        answer.lastFailure = failure->message;
    answer.saveProblem = history.saveProblem;
    answer.recovery = history.recovery;
    answer.colorMode = model.colorMode();
    answer.waitingForUser = model.isWaitingForUser();
    return answer;
}

StatusAnswer statusWithoutApp()
{
    return StatusAnswer { .running = false };
}

Answered<ScanAnswer> scan(AppModel& model, const AgentCommands::Request& request)
{
    auto path = AgentPlaces::expand(AgentPlaces::argument(request.arguments, "path").value_or(""));
    if (!path)
        return std::unexpected(path.error());
    auto chosen = model.choose(*path);
    if (!chosen)
        return std::unexpected(chosen.error());
    return ScanAnswer { chosen->path, chosen->opened ? ScanAnswer::Action::opened : ScanAnswer::Action::started };
}

Answered<ScanAnswer> rescan(AppModel& model)
{
    if (!model.result())
        return std::unexpected(AgentResult::failure(AgentErrorCode::notScanned, AgentMessages::nothingScanned));
    std::string root = ScopeResolver::displayPath(model.result()->tree->rootPath());
    model.rescan();
    return ScanAnswer { root, ScanAnswer::Action::startedAgain };
}

Answered<ShowAnswer> show(AppModel& model, const AgentCommands::Request& request)
{
    auto view = AgentPlaces::scanView(model);
    if (!view)
        return std::unexpected(view.error());
    // While a scan runs, what is shown now would be replaced by its result: the place is
    // shown in that.
    const auto& running = model.runningScan();
    auto node = AgentPlaces::scannedNode(*view, AgentPlaces::argument(request.arguments, "path"));
    if (!node)
        return std::unexpected(node.error());
    if (auto color = AgentPlaces::argument(request.arguments, "color")) {
        if (auto mode = ColorModes::fromCommandLineName(*color))
            model.setColorMode(*mode);
    }
    const ScanTree& tree = *view->tree;
    if (running)
        model.showWhenFinished(tree.path(*node));
    else
        model.show(*node);
    return ShowAnswer { ScopeResolver::displayPath(tree.path(*node)), isContainer(tree.kind(*node)), model.colorMode(), running.has_value(),
        std::nullopt };
}

}
