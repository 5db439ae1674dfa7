#include "AnswerRenderer.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentFormat.hpp"
#include "Agent/OutputLimit.hpp"
#include "AlertAddedAnswer.hpp"
#include "AlertsAnswer.hpp"
#include "AlertsRemovedAnswer.hpp"
#include "AnswerPages.hpp"
#include "ChangesAnswer.hpp"
#include "DisksAnswer.hpp"
#include "FindAnswer.hpp"
#include "HistoryAnswer.hpp"
#include "MetricsAnswer.hpp"
#include "ScanAnswer.hpp"
#include "ShowAnswer.hpp"
#include "StatusAnswer.hpp"
#include "SummaryAnswer.hpp"
#include "TypesAnswer.hpp"

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

// The most groups from 1 to `groups` that fit with `places` places each, by bisection.
template <class Answer>
std::optional<AgentResult> mostGroups(const Answer& answer, int groups, int places)
{
    std::optional<AgentResult> best;
    int low = 1;
    int high = groups;
    while (low <= high) {
        int middle = low + (high - low) / 2;
        AgentResult candidate = AnswerPages::page(answer, middle, places);
        if (candidate.fits()) {
            best = std::move(candidate);
            low = middle + 1;
        } else {
            high = middle - 1;
        }
    }
    return best;
}

// How a page of groups, each listing places, is fitted. Groups go first: a page that holds
// fewer groups leaves the rest to the next page, which the cursor reaches. Only when not even
// one group fits with every place asked for are the places per group cut down, which the page
// says. A page past the end is made once. Absent when not even one group without places fits.
template <class Answer>
std::optional<AgentResult> fittedInTwo(const Answer& answer, int groups, int places)
{
    AgentResult whole = AnswerPages::page(answer, groups, places);
    if (whole.fits())
        return whole;
    if (groups <= 0)
        return std::nullopt;
    for (int perGroup = places; perGroup >= 0; --perGroup) {
        if (auto page = mostGroups(answer, groups, perGroup))
            return page;
    }
    return std::nullopt;
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

AgentResult rendered(const ChangesAnswer& answer)
{
    return fitted(answer, AnswerPages::listedCount(answer), "These changes cannot fit within the 8 KB output limit; ask about one folder.");
}

AgentResult rendered(const DisksAnswer& answer)
{
    return fitted(answer, answer.disks.size(), "The disk list cannot fit within the 8 KB output limit.");
}

AgentResult rendered(const TypesAnswer& answer)
{
    if (const auto* ratios = std::get_if<TypesAnswer::Ratios>(&answer.listing))
        return fitted(answer, ratios->perExtreme, OutputLimit::typesPathTooLong);
    const auto& groups = std::get<TypesAnswer::Groups>(answer.listing);
    if (auto page = fittedInTwo(answer, static_cast<int>(groups.groups.size()), static_cast<int>(groups.perGroup)))
        return *std::move(page);
    bool headerFits = AnswerPages::page(answer, 0, 0).fits();
    return AgentResult::failure(AgentErrorCode::outputTooLarge, headerFits ? OutputLimit::typesGroupTooLarge : OutputLimit::typesPathTooLong);
}

AgentResult rendered(const AlertsAnswer& answer)
{
    return fitted(answer, answer.alerts.size(), "The alerts cannot fit within the 8 KB output limit.");
}

AgentResult rendered(const AlertAddedAnswer& answer)
{
    return whole(answer);
}

AgentResult rendered(const AlertsRemovedAnswer& answer)
{
    return fitted(answer, answer.removed.size(), OutputLimit::answerTooLarge);
}

// The one answer the 8 KB limit leaves alone: the tool prints it for a scraper or a cron job,
// however large, and any shortening would make other series of it.
AgentResult rendered(const MetricsAnswer& answer)
{
    return AnswerPages::page(answer);
}

}
