#include "AppCommands.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentFormat.hpp"
#include "Agent/EchoedText.hpp"
#include "AgentMessages.hpp"
#include "AgentPlaces.hpp"
#include "Classification/ColorMode.hpp"
#include "Scanning/ScopeResolver.hpp"


namespace tarnwick::AppCommands {

namespace {

JSONValue nodePath(const ScanTree& tree, std::optional<NodeID> node)
{
    if (!node)
        return JSONValue();
    return JSONValue(EchoedText::shortened(ScopeResolver::displayPath(tree.path(*node))));
}

std::string shownPath(const std::string& path)
{
    return EchoedText::shown(ScopeResolver::displayPath(path));
}

}

AgentResult status(const AppModel& model)
{
    JSONValue::Object json { { "running", true } };
    std::string text = "Tarnwick is running.";
    const auto& running = model.runningScan();
    json["scan_in_progress"] = running.has_value();
    json["scanning_path"] = JSONValue();
    json["items_so_far"] = JSONValue();
    json["current_path"] = JSONValue();
    if (running) {
        auto progress = running->scanner->progress()->state();
        std::string root = ScopeResolver::displayPath(running->scope.scanRoot);
        json["scanning_path"] = EchoedText::shortened(root);
        json["items_so_far"] = static_cast<std::int64_t>(progress.itemCount);
        json["current_path"] = progress.currentPath.empty() ? JSONValue() : JSONValue(EchoedText::shortened(progress.currentPath));
        text += "\nScanning " + EchoedText::shown(root) + ": " + AgentFormat::counted(progress.itemCount, "item", "items") + " so far.";
    }
    const auto& result = model.result();
    json["scanned_path"] = JSONValue();
    json["size_bytes"] = JSONValue();
    json["item_count"] = JSONValue();
    json["items_in_all"] = JSONValue();
    json["finished_at"] = JSONValue();
    json["incomplete"] = JSONValue();
    json["open_folder"] = JSONValue();
    json["selection"] = JSONValue();
    if (result) {
        const ScanTree& tree = *result->tree;
        bool lowerBound = tree.isIncomplete(NodeID::root());
        std::string root = ScopeResolver::displayPath(tree.rootPath());
        auto inAll = static_cast<std::int64_t>(tree.count() - 1);
        auto inside = static_cast<std::int64_t>(tree.childCount(NodeID::root()));
        json["scanned_path"] = EchoedText::shortened(root);
        json["size_bytes"] = tree.allocatedSize(NodeID::root());
        // As in summary: the items directly inside; every item below is items_in_all.
        json["item_count"] = inside;
        json["items_in_all"] = inAll;
        json["finished_at"] = AgentFormat::isoDate(result->finishedAt);
        json["incomplete"] = lowerBound;
        json["open_folder"] = nodePath(tree, model.openFolder());
        json["selection"] = nodePath(tree, model.selection());
        text += "\nScanned: " + EchoedText::shown(root) + ", " + AgentFormat::size(tree.allocatedSize(NodeID::root()), lowerBound) + ", "
            + AgentFormat::counted(inside, "item", "items") + " inside, " + std::to_string(inAll) + " in all, finished "
            + AgentFormat::isoDateText(result->finishedAt) + ".";
        text += "\nOpen folder: " + shownPath(tree.path(model.openFolder()));
        if (model.selection())
            text += "\nSelection: " + shownPath(tree.path(*model.selection()));
    } else if (!running) {
        text += "\nNothing is scanned yet.";
    }
    if (const auto& failure = model.lastFailure()) {
        json["last_failure"] = failure->message;
        text += "\nThe last scan failed: " + failure->message;
    }
    json["color_mode"] = std::string(ColorModes::commandLineName(model.colorMode()));
    json["waiting_for_user"] = model.isWaitingForUser();
    text += "\nMap color: " + std::string(ColorModes::title(model.colorMode())) + ".";
    text += model.isWaitingForUser() ? "\nTarnwick is waiting for the user." : "";
    return AgentResult::success(text, JSONValue(json));
}

AgentResult statusWithoutApp()
{
    JSONValue::Object json { { "running", false }, { "scan_in_progress", false }, { "scanned_path", JSONValue() },
        { "open_folder", JSONValue() }, { "selection", JSONValue() }, { "waiting_for_user", false } };
    return AgentResult::success("Tarnwick isn't running. disks, changes, history, types and the alert commands answer from the saved snapshots.",
        JSONValue(json));
}

AgentResult scan(AppModel& model, const AgentCommands::Request& request)
{
    auto path = AgentPlaces::expand(AgentPlaces::argument(request.arguments, "path").value_or(""));
    if (!path)
        return path.error();
    // A place inside a finished scan is opened rather than scanned again.
    if (const auto& result = model.result(); result && !model.runningScan()) {
        if (auto node = result->tree->node(ScopeResolver::realPath(*path)); node && isContainer(result->tree->kind(*node))) {
            model.open(*node);
            return AgentResult::success("Opened " + EchoedText::shown(*path) + " in the existing scan. Run summary for its contents.",
                JSONValue(JSONValue::Object { { "path", EchoedText::shortened(*path) }, { "scan_started", false }, { "opened", true } }));
        }
    }
    if (std::optional<AgentResult> refused = AgentPlaces::unscannable(*path))
        return *refused;
    auto scope = ScopeResolver::resolve(*path);
    if (!scope) {
        return AgentResult::failure(AgentErrorCode::invalidPath,
            EchoedText::shown(*path) + ": " + std::string(scope.error().title()) + ". " + scope.error().detail());
    }
    model.scan(*scope);
    std::string root = ScopeResolver::displayPath(scope->scanRoot);
    return AgentResult::success("Scanning " + EchoedText::shown(root) + ". Run wait, then summary.",
        JSONValue(JSONValue::Object { { "path", EchoedText::shortened(root) }, { "scan_started", true }, { "opened", false } }));
}

AgentResult rescan(AppModel& model)
{
    if (!model.result())
        return AgentResult::failure(AgentErrorCode::notScanned, AgentMessages::nothingScanned);
    std::string root = ScopeResolver::displayPath(model.result()->tree->rootPath());
    model.rescan();
    return AgentResult::success("Scanning " + EchoedText::shown(root) + " again. Run wait, then summary: it reports the size before the rescan.",
        JSONValue(JSONValue::Object { { "path", EchoedText::shortened(root) }, { "scan_started", true } }));
}

AgentResult show(AppModel& model, const AgentCommands::Request& request)
{
    if (model.runningScan())
        return AgentResult::failure(AgentErrorCode::scanInProgress, AgentMessages::scanRunning);
    auto node = AgentPlaces::scannedNode(model, AgentPlaces::argument(request.arguments, "path"));
    if (!node)
        return node.error();
    if (auto color = AgentPlaces::argument(request.arguments, "color")) {
        if (auto mode = ColorModes::fromCommandLineName(*color))
            model.setColorMode(*mode);
    }
    const ScanTree& tree = *model.result()->tree;
    bool folder = isContainer(tree.kind(*node));
    if (folder) {
        model.open(*node);
    } else {
        model.open(tree.parent(*node).value_or(NodeID::root()));
        model.select(*node);
    }
    std::string path = ScopeResolver::displayPath(tree.path(*node));
    return AgentResult::success((folder ? "Opened " : "Selected ") + EchoedText::shown(path) + " on the map, coloured by "
            + std::string(ColorModes::title(model.colorMode())) + ".",
        JSONValue(JSONValue::Object { { "path", EchoedText::shortened(path) }, { "opened", folder }, { "selected", !folder },
            { "color_mode", std::string(ColorModes::commandLineName(model.colorMode())) } }));
}

}
