#pragma once

#include "Agent/AgentResult.hpp"

// The renderer's pages, one file of them per answer: each makes the answer's text and JSON
// with the first `shown` of its listed items. AnswerRenderer decides how many fit.
namespace tarnwick {

struct AlreadyRunningAnswer;
struct FindAnswer;
struct HistoryAnswer;
struct ScanAnswer;
struct ShowAnswer;
struct StatusAnswer;
struct SummaryAnswer;

namespace AnswerPages {

AgentResult page(const StatusAnswer& answer, int shown);         // StatusPage.cpp
AgentResult page(const ScanAnswer& answer, int shown);           // ScanPage.cpp
AgentResult page(const AlreadyRunningAnswer& answer, int shown);
AgentResult page(const ShowAnswer& answer, int shown);           // ShowPage.cpp
AgentResult page(const SummaryAnswer& answer, int shown);        // SummaryPage.cpp
AgentResult page(const FindAnswer& answer, int shown);           // FindPage.cpp
AgentResult page(const HistoryAnswer& answer, int shown);        // HistoryPage.cpp

}

}
