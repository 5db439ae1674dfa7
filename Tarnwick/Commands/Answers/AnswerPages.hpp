#pragma once

#include "Agent/AgentResult.hpp"

// The renderer's pages, one file of them per answer: each makes the answer's text and JSON
// with the first `shown` of its listed items. AnswerRenderer decides how many fit.
namespace tarnwick {

struct HistoryAnswer;

namespace AnswerPages {

AgentResult page(const HistoryAnswer& answer, int shown); // HistoryPage.cpp

}

}
