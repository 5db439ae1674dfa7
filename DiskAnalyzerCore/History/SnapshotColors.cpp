#include "History/SnapshotColors.hpp"

#include "Classification/ModeBucketMaps.hpp"

namespace tarnwick {

SnapshotColors SnapshotColors::make(std::shared_ptr<const ScanTree> tree, const DateGroup::Boundaries& boundaries)
{
    SnapshotColors colors;
    colors.boundaries = boundaries;
    colors.content = ContentMap::build(tree);
    colors.modified = ModeBucketMaps::dates(tree, ModeBucketMaps::DateKind::modified, boundaries);
    colors.created = ModeBucketMaps::dates(tree, ModeBucketMaps::DateKind::created, boundaries);
    colors.hidden = ModeBucketMaps::hidden(std::move(tree));
    return colors;
}

}
