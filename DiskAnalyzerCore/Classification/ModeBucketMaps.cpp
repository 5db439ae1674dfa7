#include "Classification/ModeBucketMaps.hpp"

#include "Classification/RestBuckets.hpp"
#include "Scanning/ScanTree.hpp"

#include <algorithm>

namespace tarnwick::ModeBucketMaps {

namespace {

std::shared_ptr<const BucketMap> buildOwnValues(std::shared_ptr<const ScanTree> tree, int width, int unknown,
    std::vector<std::uint8_t> values, RestMode restMode)
{
    BucketMap::Input input;
    input.fallbacks = values;
    input.categories = std::move(values);
    if (const std::shared_ptr<const RestBuckets>& rests = tree->rests())
        input.rests = rests->shares(restMode);
    return BucketMap::build(std::move(tree), width, unknown, std::move(input));
}

}

std::shared_ptr<const BucketMap> dates(std::shared_ptr<const ScanTree> tree, DateKind kind, const DateGroup::Boundaries& boundaries)
{
    if (!tree)
        return nullptr;
    std::span<const std::int32_t> seconds = kind == DateKind::modified ? tree->modifiedSeconds() : tree->createdSeconds();
    std::vector<std::uint8_t> groups(seconds.size());
    for (std::size_t i = 0; i < seconds.size(); ++i) {
        std::optional<DateGroup> group = boundaries.group(seconds[i]);
        groups[i] = group ? group->raw() : static_cast<std::uint8_t>(noDateBucket);
    }
    RestMode restMode = kind == DateKind::modified ? RestMode::modified : RestMode::created;
    return buildOwnValues(std::move(tree), dateWidth, noDateBucket, std::move(groups), restMode);
}

std::shared_ptr<const BucketMap> hidden(std::shared_ptr<const ScanTree> tree)
{
    if (!tree)
        return nullptr;
    const auto count = static_cast<std::size_t>(std::max(tree->count(), 0));
    std::vector<std::uint8_t> visibility(count, visibleBucket);
    for (std::size_t i = 0; i < count; ++i) {
        if (tree->isHiddenFromFinder(NodeID { static_cast<std::int32_t>(i) }).value_or(false))
            visibility[i] = hiddenBucket;
    }
    return buildOwnValues(std::move(tree), visibilityWidth, visibleBucket, std::move(visibility), RestMode::hidden);
}

}
