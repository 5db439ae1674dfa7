#pragma once

#include "Agent/AgentResult.hpp"
#include "AnswerTypes.hpp"
#include "Answered.hpp"

namespace tarnwick {

// The one place where command answers become words and JSON. Both are made together from
// the same typed answer, so the text and --json cannot tell different things, and here
// alone each answer is fitted to the 8 KB limit: paths and names it repeats are shortened in
// the middle and written visibly, and lists are shrunk (saying so) or paged.
namespace AnswerRenderer {

AgentResult rendered(const StatusAnswer& answer);
AgentResult rendered(const ScanAnswer& answer);
AgentResult rendered(const AlreadyRunningAnswer& answer);
AgentResult rendered(const ShowAnswer& answer);
AgentResult rendered(const SummaryAnswer& answer);
AgentResult rendered(const FindAnswer& answer);
AgentResult rendered(const HistoryAnswer& answer);
AgentResult rendered(const ChangesAnswer& answer);
AgentResult rendered(const DisksAnswer& answer);
AgentResult rendered(const TypesAnswer& answer);
AgentResult rendered(const AlertsAnswer& answer);
AgentResult rendered(const AlertAddedAnswer& answer);
AgentResult rendered(const AlertsRemovedAnswer& answer);
AgentResult rendered(const MetricsAnswer& answer);

template <class Answer>
AgentResult rendered(const Answered<Answer>& answered)
{
    return answered ? rendered(*answered) : answered.error();
}

}

}
