#include "Classification/ModeBucketMaps.hpp"

#include "Classification/RestBuckets.hpp"
#include "Scanning/ScanTree.hpp"

#include <algorithm>

namespace tarnwick::ModeBucketMaps {

namespace {

BucketMap::Plan ownValues(const ScanTree& tree, int width, int unknown, std::vector<std::uint8_t> values, RestMode restMode)
{
    BucketMap::Plan plan { width, unknown, {} };
    plan.input.fallbacks = values;
    plan.input.categories = std::move(values);
    if (const std::shared_ptr<const RestBuckets>& rests = tree.rests())
        plan.input.rests = rests->shares(restMode);
    return plan;
}

BucketMap::Plan datePlan(const ScanTree& tree, DateKind kind, const DateGroup::Boundaries& boundaries)
{
    std::span<const std::int32_t> seconds = kind == DateKind::modified ? tree.modifiedSeconds() : tree.createdSeconds();
    std::vector<std::uint8_t> groups(seconds.size());
    for (std::size_t i = 0; i < seconds.size(); ++i) {
        std::optional<DateGroup> group = boundaries.group(seconds[i]);
        groups[i] = group ? group->raw() : static_cast<std::uint8_t>(noDateBucket);
    }
    RestMode restMode = kind == DateKind::modified ? RestMode::modified : RestMode::created;
    return ownValues(tree, dateWidth, noDateBucket, std::move(groups), restMode);
}

BucketMap::Plan hiddenPlan(const ScanTree& tree)
{
    const auto count = static_cast<std::size_t>(std::max(tree.count(), 0));
    std::vector<std::uint8_t> visibility(count, visibleBucket);
    for (std::size_t i = 0; i < count; ++i) {
        if (tree.isHiddenFromFinder(NodeID { static_cast<std::int32_t>(i) }).value_or(false))
            visibility[i] = hiddenBucket;
    }
    return ownValues(tree, visibilityWidth, visibleBucket, std::move(visibility), RestMode::hidden);
}

}

std::shared_ptr<const BucketMap> dates(std::shared_ptr<const ScanTree> tree, DateKind kind, const DateGroup::Boundaries& boundaries)
{
    if (!tree)
        return nullptr;
    BucketMap::Plan plan = datePlan(*tree, kind, boundaries);
    return BucketMap::build(std::move(tree), plan.width, plan.unknown, std::move(plan.input));
}

std::shared_ptr<const BucketMap> hidden(std::shared_ptr<const ScanTree> tree)
{
    if (!tree)
        return nullptr;
    BucketMap::Plan plan = hiddenPlan(*tree);
    return BucketMap::build(std::move(tree), plan.width, plan.unknown, std::move(plan.input));
}

Maps together(std::shared_ptr<const ScanTree> tree, const DateGroup::Boundaries& boundaries, Visibility visibility)
{
    if (!tree)
        return {};
    std::vector<BucketMap::Plan> plans;
    plans.push_back(datePlan(*tree, DateKind::modified, boundaries));
    plans.push_back(datePlan(*tree, DateKind::created, boundaries));
    if (visibility == Visibility::with)
        plans.push_back(hiddenPlan(*tree));
    std::vector<std::shared_ptr<const BucketMap>> made = BucketMap::buildTogether(std::move(tree), std::move(plans));
    return Maps { made[0], made[1], made.size() > 2 ? made[2] : nullptr };
}

}
