#include "Classification/OwnerBuckets.hpp"

#include "Scanning/ScanTree.hpp"

#include <algorithm>

namespace tarnwick {

std::shared_ptr<const OwnerBuckets> OwnerBuckets::build(std::shared_ptr<const ScanTree> tree, Assignment assignment)
{
    const std::vector<ColorGroup>& groups = assignment.groups;
    if (!tree || groups.empty() || groups.size() >= 255)
        return nullptr;
    if (!std::all_of(groups.begin(), groups.end(), [](const ColorGroup& group) { return group.isOwnerModeGroup(); }))
        return nullptr;
    BucketMap::Input input { std::move(assignment.categories), std::move(assignment.fallbacks), {}, {} };
    auto buckets = BucketMap::build(std::move(tree), static_cast<int>(groups.size()), assignment.unknown, std::move(input));
    if (!buckets)
        return nullptr;
    return std::shared_ptr<const OwnerBuckets>(new OwnerBuckets(std::move(assignment.groups), std::move(buckets)));
}

}
