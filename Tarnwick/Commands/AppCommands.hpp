#pragma once

#include "Agent/AgentRequest.hpp"
#include "AppModel.hpp"
#include "Answers/Answered.hpp"
#include "Answers/FindAnswer.hpp"
#include "Answers/ScanAnswer.hpp"
#include "Answers/ShowAnswer.hpp"
#include "Answers/StatusAnswer.hpp"
#include "Answers/SummaryAnswer.hpp"

namespace tarnwick::AppCommands {

// What status tells of the history besides the scan: why the latest snapshot couldn't be
// saved, and that a damaged index was rebuilt.
struct HistoryNotes {
    std::optional<std::string> saveProblem;
    std::optional<std::string> recovery;
};

// Each runs on the main executor against the model the window shows, and returns the facts
// of its answer for AnswerRenderer to put into words.
StatusAnswer status(const AppModel& model, const HistoryNotes& history = {});
Answered<ScanAnswer> scan(AppModel& model, const AgentCommands::Request& request);
Answered<ScanAnswer> rescan(AppModel& model);
Answered<ShowAnswer> show(AppModel& model, const AgentCommands::Request& request);
Answered<SummaryAnswer> summary(const AppModel& model, const AgentCommands::Request& request);
Answered<FindAnswer> find(const AppModel& model, const AgentCommands::Request& request);

// The answer of a tool whose app isn't running.
StatusAnswer statusWithoutApp();

}
