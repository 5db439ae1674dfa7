#pragma once

#include "Agent/AgentResult.hpp"
#include "AnswerTypes.hpp"

#include <cstddef>

// The renderer's pages, one file of them per answer: each makes the answer's text and JSON
// with the first `shown` of its listed items. AnswerRenderer decides how many fit.
namespace tarnwick {

namespace AnswerPages {

AgentResult page(const StatusAnswer& answer, int shown);         // StatusPage.cpp
AgentResult page(const ScanAnswer& answer, int shown);           // ScanPage.cpp
AgentResult page(const AlreadyRunningAnswer& answer, int shown);
AgentResult page(const ShowAnswer& answer, int shown);           // ShowPage.cpp
AgentResult page(const SummaryAnswer& answer, int shown);        // SummaryPage.cpp
AgentResult page(const FindAnswer& answer, int shown);           // FindPage.cpp
AgentResult page(const HistoryAnswer& answer, int shown);        // HistoryPage.cpp
AgentResult page(const ChangesAnswer& answer, int shown);        // ChangesPage.cpp
// How many changed places a page of the whole answer lists (the longest of its lists).
std::size_t listedCount(const ChangesAnswer& answer);
AgentResult page(const DisksAnswer& answer, int shown);          // DisksPage.cpp
// TypesPage.cpp: a page of groups, `shown` of them from the cursor with up to `places`
// places each; and in the ratio mode, `shown` items of each extreme.
AgentResult page(const TypesAnswer& answer, int shown, int places);
AgentResult page(const TypesAnswer& answer, int shown);
AgentResult page(const AlertsAnswer& answer, int shown);         // AlertsPage.cpp
AgentResult page(const AlertAddedAnswer& answer, int shown);
AgentResult page(const AlertsRemovedAnswer& answer, int shown);
AgentResult page(const MetricsAnswer& answer);                   // MetricsPage.cpp

}

}
