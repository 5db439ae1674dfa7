#pragma once

#include "Agent/AgentResult.hpp"
#include "History/HistoryPeriod.hpp"
#include "History/HistoryPlaces.hpp"
#include "SnapshotAnswers.hpp"

#include <expected>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// What the snapshot commands share: finding the history, a place in it, and the periods as
// the command line names them.
namespace tarnwick::SnapshotPlaces {

// The app's history, or the one in the user's data folder, opened into `owned`. Null when
// there is no history yet (the tool never creates one just to read it).
HistoryStore* history(const SnapshotAnswers::Context& context, std::unique_ptr<HistoryStore>& owned);

// The place in the latest snapshot that keeps it; NO_HISTORY when none does.
std::expected<HistoryPlaces::Located, AgentResult> locate(HistoryStore* store, const std::string& path);
AgentResult noHistory();

// The --period of a request (a command-line name), yesterday when absent.
HistoryPeriod period(const std::map<std::string, std::string>& arguments);
// "yesterday", "week", "3-months": the name the command line takes.
std::string periodName(HistoryPeriod period);

}
