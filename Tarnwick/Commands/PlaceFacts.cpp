#include "PlaceFacts.hpp"

#include <algorithm>

namespace tarnwick {

namespace {

std::optional<std::int64_t> groupBytes(const std::optional<std::vector<TypeGroups::Group>>& groups, std::string_view key)
{
    if (!groups)
        return std::nullopt;
    for (const TypeGroups::Group& group : *groups) {
        if (group.key == key)
            return group.bytes;
    }
    return 0;
}

std::vector<TypeGroups::Ratio> notable(const std::vector<TypeGroups::Ratio>& extremes, bool (*isNotable)(double))
{
    std::vector<TypeGroups::Ratio> kept;
    for (const TypeGroups::Ratio& ratio : extremes) {
        if (kept.size() < PlaceFacts::maximumRatios && ratio.ratio && isNotable(*ratio.ratio))
            kept.push_back(ratio);
    }
    return kept;
}

}

PlaceFacts PlaceFacts::make(const std::shared_ptr<const ScanTree>& tree, NodeID place, const ScanAnalysis* analysis)
{
    PlaceFacts facts;
    TypeGroups::Maps maps = analysis ? analysis->maps() : TypeGroups::Maps {};
    if (analysis) {
        if (auto owners = TypeGroups::groups(tree, place, ColorMode::owner, maps)) {
            facts.owners.emplace();
            for (std::size_t i = 0; i < std::min(owners->size(), maximumOwners); ++i)
                facts.owners->push_back({ (*owners)[i].key, (*owners)[i].label, (*owners)[i].bytes });
        }
        facts.cacheBytes = groupBytes(TypeGroups::groups(tree, place, ColorMode::caches, maps), "caches");
    }
    facts.hiddenBytes = groupBytes(TypeGroups::groups(tree, place, ColorMode::hiddenFromFinder, maps), "hidden");
    TypeGroups::Extremes extremes = TypeGroups::ratios(*tree, place);
    facts.ratio = extremes.place;
    facts.lowest = notable(extremes.lowest, [](double ratio) { return ratio < lowRatio; });
    facts.highest = notable(extremes.highest, [](double ratio) { return ratio > highRatio; });
    return facts;
}

}
