#include "Classification/ModeBucketMaps.hpp"

#include "Classification/RestBuckets.hpp"
#include "Scanning/ScanTree.hpp"

#include <algorithm>

namespace tarnwick::ModeBucketMaps {

namespace {

BucketMap::Spec ownValues(const ScanTree& tree, int width, int unknown, std::vector<std::uint8_t> values, RestMode restMode)
{
    BucketMap::Spec spec { width, unknown, {} };
    spec.input.fallbacks = values;
    spec.input.categories = std::move(values);
    if (const std::shared_ptr<const RestBuckets>& rests = tree.rests())
        spec.input.rests = rests->shares(restMode);
    return spec;
}

BucketMap::Spec dateSpec(const ScanTree& tree, DateKind kind, const DateGroup::Boundaries& boundaries)
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

BucketMap::Spec hiddenSpec(const ScanTree& tree)
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
    BucketMap::Spec spec = dateSpec(*tree, kind, boundaries);
    return BucketMap::build(std::move(tree), spec.width, spec.unknown, std::move(spec.input));
}

std::shared_ptr<const BucketMap> hidden(std::shared_ptr<const ScanTree> tree)
{
    if (!tree)
        return nullptr;
    BucketMap::Spec spec = hiddenSpec(*tree);
    return BucketMap::build(std::move(tree), spec.width, spec.unknown, std::move(spec.input));
}

Maps together(std::shared_ptr<const ScanTree> tree, const DateGroup::Boundaries& boundaries, Visibility visibility)
{
    if (!tree)
        return {};
    std::vector<BucketMap::Spec> specs;
    specs.push_back(dateSpec(*tree, DateKind::modified, boundaries));
    specs.push_back(dateSpec(*tree, DateKind::created, boundaries));
    if (visibility == Visibility::with)
        specs.push_back(hiddenSpec(*tree));
    std::vector<std::shared_ptr<const BucketMap>> made = BucketMap::buildTogether(std::move(tree), std::move(specs));
    return Maps { made[0], made[1], made.size() > 2 ? made[2] : nullptr };
}

}
