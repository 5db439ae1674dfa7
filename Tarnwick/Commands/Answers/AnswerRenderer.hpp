#pragma once

#include "Agent/AgentResult.hpp"
#include "Answered.hpp"

namespace tarnwick {

struct HistoryAnswer;

// The one place where command answers become words and JSON. Both are made together from
// the same typed answer, so the text and --json cannot tell different things, and here
// alone each answer is fitted to the 8 KB limit: paths and names it repeats are shortened in
// the middle and written visibly, and lists are shrunk (saying so) or paged.
namespace AnswerRenderer {

AgentResult rendered(const HistoryAnswer& answer);

template <class Answer>
AgentResult rendered(const Answered<Answer>& answered)
{
    return answered ? rendered(*answered) : answered.error();
}

}

}
