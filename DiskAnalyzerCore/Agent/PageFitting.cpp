#include "Agent/PageFitting.hpp"

namespace tarnwick::PageFitting {

namespace {

// The largest count of groups from 1 to groups whose answer fits, by bisection: fewer groups
// never make an answer longer.
std::optional<Fitted> mostGroups(int groups, int places, const std::function<AgentResult(int, int)>& make)
{
    std::optional<Fitted> best;
    int low = 1;
    int high = groups;
    while (low <= high) {
        int middle = low + (high - low) / 2;
        AgentResult candidate = make(middle, places);
        if (candidate.fits()) {
            best = Fitted { std::move(candidate), middle, places };
            low = middle + 1;
        } else {
            high = middle - 1;
        }
    }
    return best;
}

}

std::optional<Fitted> fit(int groups, int places, const std::function<AgentResult(int groups, int places)>& make)
{
    if (groups <= 0) {
        AgentResult empty = make(0, places);
        if (!empty.fits())
            return std::nullopt;
        return Fitted { std::move(empty), 0, places };
    }
    AgentResult whole = make(groups, places);
    if (whole.fits())
        return Fitted { std::move(whole), groups, places };
    for (int perGroup = places; perGroup >= 0; --perGroup) {
        if (auto page = mostGroups(groups, perGroup, make))
            return page;
    }
    return std::nullopt;
}

}
