#include "AnswerPages.hpp"

#include "Agent/AgentFormat.hpp"
#include "Agent/EchoedText.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "StatusAnswer.hpp"

namespace tarnwick::AnswerPages {

namespace {

JSONValue optionalText(const std::optional<std::string>& text)
{
    return text ? JSONValue(*text) : JSONValue();
}

JSONValue optionalPath(const std::optional<std::string>& path)
{
    return path ? JSONValue(EchoedText::shortened(*path)) : JSONValue();
}

AgentResult withoutApp()
{
    JSONValue::Object json { { "running", false }, { "scan_in_progress", false }, { "scanned_path", JSONValue() },
        { "open_folder", JSONValue() }, { "selection", JSONValue() }, { "waiting_for_user", false } };
    return AgentResult::success("Tarnwick isn't running. disks, changes, history, types and the alert commands answer from the saved snapshots.",
        JSONValue(json));
}

}

AgentResult page(const StatusAnswer& answer, int)
{
    if (!answer.running)
        return withoutApp();
    JSONValue::Object json { { "running", true } };
    std::string text = "Tarnwick is running.";
    const auto& scanning = answer.scanning;
    json["scan_in_progress"] = scanning.has_value();
    json["scanning_path"] = scanning ? JSONValue(EchoedText::shortened(scanning->root)) : JSONValue();
    json["items_so_far"] = scanning ? JSONValue(scanning->itemsSoFar) : JSONValue();
    json["current_path"] = scanning && !scanning->currentPath.empty() ? JSONValue(EchoedText::shortened(scanning->currentPath)) : JSONValue();
    if (scanning)
        text += "\nScanning " + EchoedText::shown(scanning->root) + ": " + AgentFormat::counted(scanning->itemsSoFar, "item", "items") + " so far.";
    const auto& scanned = answer.scanned;
    json["scanned_path"] = scanned ? JSONValue(EchoedText::shortened(scanned->root)) : JSONValue();
    json["size_bytes"] = scanned ? JSONValue(scanned->bytes) : JSONValue();
    // As in summary: the items directly inside; every item below is items_in_all.
    json["item_count"] = scanned ? JSONValue(scanned->inside) : JSONValue();
    json["items_in_all"] = scanned ? JSONValue(scanned->inAll) : JSONValue();
    json["finished_at"] = scanned ? AgentFormat::isoDate(scanned->finishedAt) : JSONValue();
    json["incomplete"] = scanned ? JSONValue(scanned->incomplete) : JSONValue();
    json["open_folder"] = scanned ? optionalPath(scanned->openFolder) : JSONValue();
    json["selection"] = scanned ? optionalPath(scanned->selection) : JSONValue();
    if (scanned) {
        text += "\nScanned: " + EchoedText::shown(scanned->root) + ", " + AgentFormat::size(scanned->bytes, scanned->incomplete) + ", "
            + AgentFormat::counted(scanned->inside, "item", "items") + " inside, " + std::to_string(scanned->inAll) + " in all, finished "
            + AgentFormat::isoDateText(scanned->finishedAt) + ".";
        text += "\nOpen folder: " + EchoedText::shown(scanned->openFolder);
        if (scanned->selection)
            text += "\nSelection: " + EchoedText::shown(*scanned->selection);
    } else if (!scanning) {
        text += "\nNothing is scanned yet.";
    }
    if (answer.lastFailure) {
        json["last_failure"] = *answer.lastFailure;
        text += "\nThe last scan failed: " + *answer.lastFailure;
    }
    json["snapshot_not_saved"] = optionalText(answer.saveProblem);
    json["history_rebuilt"] = optionalText(answer.recovery);
    if (answer.saveProblem)
        text += "\n" + *answer.saveProblem;
    if (answer.recovery)
        text += "\n" + *answer.recovery;
    json["color_mode"] = std::string(ColorModes::commandLineName(answer.colorMode));
    json["waiting_for_user"] = answer.waitingForUser;
    text += "\nMap color: " + std::string(ColorModes::title(answer.colorMode)) + ".";
    if (answer.waitingForUser)
        text += "\nTarnwick is waiting for the user.";
    return AgentResult::success(text, JSONValue(json));
}

}
