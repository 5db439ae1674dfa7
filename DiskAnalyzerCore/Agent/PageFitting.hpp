#pragma once

#include "Agent/AgentResult.hpp"

#include <functional>
#include <optional>

// A page of groups, each listing some places, made to fit the 8 KB limit. Groups go first:
// a page that holds fewer groups leaves the rest to the next page, which the cursor reaches.
// Only when not even one group fits with every place asked for are the places per group cut
// down, and the answer must say so.
namespace tarnwick::PageFitting {

struct Fitted {
    AgentResult result;
    int groups = 0; // how many groups the page holds
    int places = 0; // how many places each group lists
};

// make(groups, places) builds the answer with the first `groups` groups and up to `places`
// places per group; answers only grow with either. With groups 0 (a page past the end) the
// answer is made once. Absent when not even one group without places fits.
std::optional<Fitted> fit(int groups, int places, const std::function<AgentResult(int groups, int places)>& make);

}
