#include "AnswerRenderer.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "AnswerPages.hpp"
#include "HistoryAnswer.hpp"

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

}

AgentResult rendered(const HistoryAnswer& answer)
{
    return fitted(answer, answer.rows.size(), "This history cannot fit within the 8 KB output limit.");
}

}
