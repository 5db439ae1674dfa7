#include "AnswerRenderer.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "AnswerPages.hpp"
#include "Agent/AgentFormat.hpp"
#include "Agent/OutputLimit.hpp"
#include "FindAnswer.hpp"
#include "HistoryAnswer.hpp"
#include "ScanAnswer.hpp"
#include "ShowAnswer.hpp"
#include "StatusAnswer.hpp"
#include "SummaryAnswer.hpp"

#include <optional>
#include <string_view>

namespace tarnwick::AnswerRenderer {

namespace {

// How a listing answer is fitted: with as many of its `listed` items as fit, fewer never
// making it longer. When the items cannot be left out (a page that held none would only
// point to itself again) an answer that fits none of them says that it is too large.
template <class Answer>
AgentResult fitted(const Answer& answer, std::size_t listed, std::string_view tooLarge, bool needsOne = false)
{
    int count = static_cast<int>(listed);
    int low = needsOne && count > 0 ? 1 : 0;
    AgentResult all = AnswerPages::page(answer, count);
    if (all.fits())
        return all;
    int high = count - 1;
    std::optional<AgentResult> best;
    while (low <= high) {
        int middle = low + (high - low) / 2;
        AgentResult candidate = AnswerPages::page(answer, middle);
        if (candidate.fits()) {
            best = std::move(candidate);
            low = middle + 1;
        } else {
            high = middle - 1;
        }
    }
    if (!best)
        return AgentResult::failure(AgentErrorCode::outputTooLarge, tooLarge);
    return *std::move(best);
}

// An answer without a list is what it is, unless something it repeats made it too large.
template <class Answer>
AgentResult whole(const Answer& answer)
{
    return AgentFormat::withinLimit(AnswerPages::page(answer, 0));
}

}

AgentResult rendered(const StatusAnswer& answer)
{
    return whole(answer);
}

AgentResult rendered(const ScanAnswer& answer)
{
    return whole(answer);
}

AgentResult rendered(const AlreadyRunningAnswer& answer)
{
    return whole(answer);
}

AgentResult rendered(const ShowAnswer& answer)
{
    return whole(answer);
}

AgentResult rendered(const SummaryAnswer& answer)
{
    return fitted(answer, answer.items.size(), OutputLimit::summaryTooLarge);
}

// A page that cannot hold even its first item would name the same cursor again forever.
AgentResult rendered(const FindAnswer& answer)
{
    return fitted(answer, answer.items.size(), OutputLimit::findPathTooLong, true);
}

AgentResult rendered(const HistoryAnswer& answer)
{
    return fitted(answer, answer.rows.size(), "This history cannot fit within the 8 KB output limit.");
}

}
