#pragma once

#include "Agent/AgentResult.hpp"
#include "History/HistoryPeriod.hpp"
#include "History/HistoryPlaces.hpp"
#include "Platform/MountTable.hpp"
#include "SnapshotAnswers.hpp"

#include <expected>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// What the snapshot commands share: finding the history, a place in it, the periods, and
// the ways sizes, changes and dates are written for people.
namespace tarnwick::SnapshotPlaces {

// The app's history, or the one in the user's data folder, opened into `owned`. Null when
// there is no history yet (the tool never creates one just to read it).
HistoryStore* history(const SnapshotAnswers::Context& context, std::unique_ptr<HistoryStore>& owned);

// A place as typed and with its links resolved, when that differs.
std::vector<std::string> pathForms(const std::string& path);

// The place in the latest snapshot that keeps it; NO_HISTORY when none does.
std::expected<HistoryPlaces::Located, AgentResult> locate(HistoryStore* store, const std::string& path);
AgentResult noHistory();

// The --period of a request (a command-line name), yesterday when absent.
HistoryPeriod period(const std::map<std::string, std::string>& arguments);
// "yesterday", "week", "3-months": the name the command line takes.
std::string periodName(HistoryPeriod period);

// The mount whose mount point is exactly path (as typed or resolved): a disk given by its
// mount point. Absent for any folder inside one.
std::optional<MountEntry> mountAt(const std::string& path);

// "+1.20 GB", "-300 MB", "≈+40.0 MB" when one of the scans didn't read all of it.
std::string signedSize(std::int64_t change, bool uncertain = false);
// Local time as people read it: "2024-05-31 18:02", and the day alone: "2024-05-31".
std::string localTime(Date date);
std::string localDay(Date date);

}
