#pragma once

#include "Answers/HistoryAnswer.hpp"
#include "Answers/Answered.hpp"
#include "SnapshotAnswers.hpp"

// The handlers behind SnapshotAnswers, one file per command or pair of commands.
namespace tarnwick::SnapshotCommands {

using Context = SnapshotAnswers::Context;
using Request = AgentCommands::Request;

AgentResult disks(const Request& request, const Context& context);    // DisksCommand.cpp
AgentResult changes(const Request& request, const Context& context);  // ChangesCommand.cpp
Answered<HistoryAnswer> history(const Request& request, const Context& context);  // HistoryCommand.cpp
AgentResult types(const Request& request, const Context& context);    // TypesCommand.cpp
AgentResult alerts(const Request& request, const Context& context);   // AlertCommands.cpp
AgentResult addAlert(const Request& request, const Context& context);
AgentResult removeAlert(const Request& request, const Context& context);
AgentResult metrics(const Request& request, const Context& context);  // MetricsCommand.cpp

}
