#pragma once

#include "Answers/AlertAddedAnswer.hpp"
#include "Answers/AlertsAnswer.hpp"
#include "Answers/AlertsRemovedAnswer.hpp"
#include "Answers/Answered.hpp"
#include "Answers/ChangesAnswer.hpp"
#include "Answers/DisksAnswer.hpp"
#include "Answers/HistoryAnswer.hpp"
#include "Answers/MetricsAnswer.hpp"
#include "Answers/TypesAnswer.hpp"
#include "SnapshotAnswers.hpp"

// The handlers behind SnapshotAnswers, one file per command or pair of commands.
namespace tarnwick::SnapshotCommands {

using Context = SnapshotAnswers::Context;
using Request = AgentCommands::Request;

Answered<DisksAnswer> disks(const Request& request, const Context& context);              // DisksCommand.cpp
Answered<ChangesAnswer> changes(const Request& request, const Context& context);          // ChangesCommand.cpp
Answered<HistoryAnswer> history(const Request& request, const Context& context);          // HistoryCommand.cpp
Answered<TypesAnswer> types(const Request& request, const Context& context);              // TypesCommand.cpp
Answered<AlertsAnswer> alerts(const Request& request, const Context& context);            // AlertCommands.cpp
Answered<AlertAddedAnswer> addAlert(const Request& request, const Context& context);
Answered<AlertsRemovedAnswer> removeAlert(const Request& request, const Context& context);
Answered<MetricsAnswer> metrics(const Request& request, const Context& context);          // MetricsCommand.cpp

}
