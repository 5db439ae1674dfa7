#pragma once

#include "Agent/AgentRequest.hpp"
#include "Agent/AgentResult.hpp"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tarnwick {

class HistoryStore;
class ScanAnalysis;
class ScanTree;

namespace SnapshotAnswers {

// What the app shows, for the commands that default to it or prefer it to a snapshot. The
// tool, without the app, answers with an empty context. Everything in it is immutable and
// shared, so an answer is computed off the main executor.
struct Context {
    std::shared_ptr<const ScanTree> tree;        // the result on screen
    std::shared_ptr<const ScanAnalysis> analysis; // its colours and owners, made with the scan
    std::optional<std::string> openFolder;       // absolute path of the folder open in the window
    HistoryStore* store = nullptr;               // the app's history; the tool opens its own
};

// The commands the table routes to the history (Route::history), answered from the saved
// snapshots and settings, the same in the app and, while it isn't running, in the tool.
AgentResult answer(const AgentCommands::Request& request, const Context& context = {});

}

}
