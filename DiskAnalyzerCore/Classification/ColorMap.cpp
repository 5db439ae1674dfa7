#include "Classification/ColorMap.hpp"

#include "Classification/ModeBucketMaps.hpp"
#include "Scanning/ScanTree.hpp"
#include "Support/SaturatingMath.hpp"

namespace tarnwick {

namespace {

std::vector<ColorGroup> contentGroups()
{
    std::vector<ColorGroup> groups;
    for (ContentCategory category : allContentCategories)
        groups.push_back(ColorGroup::content(category));
    return groups;
}

std::vector<ColorGroup> dateGroups()
{
    std::vector<ColorGroup> groups;
    for (DateGroup group : allDateGroups)
        groups.push_back(ColorGroup::date(group));
    groups.push_back(ColorGroup::unknown()); // no date
    return groups;
}

// A share of a folder's total, unknown when there is nothing to share.
NodeColor shareOf(std::int64_t part, std::int64_t total)
{
    if (total < 1)
        return NodeColor::unknown();
    return NodeColor::share(static_cast<double>(part) / static_cast<double>(total));
}

std::int64_t sum(const std::vector<std::int64_t>& row)
{
    std::int64_t total = 0;
    for (std::int64_t bytes : row)
        SaturatingMath::add(total, bytes);
    return total;
}

}

std::shared_ptr<const ColorMap> ColorMap::make(ColorMode mode, std::shared_ptr<const ScanTree> tree, Sources sources)
{
    std::shared_ptr<ColorMap> map(new ColorMap());
    map->m_mode = mode;
    map->m_boundaries = sources.boundaries ? *sources.boundaries : DateGroup::Boundaries::current();
    map->m_owner = std::move(sources.owner);
    map->m_content = std::move(sources.content);
    map->m_tree = tree;
    if (!tree)
        return map;
    switch (mode) {
    case ColorMode::contentType:
    case ColorMode::caches:
        if (!map->m_content)
            map->m_content = ContentMap::build(tree);
        map->m_groups = contentGroups();
        map->m_available = map->m_content != nullptr;
        break;
    case ColorMode::owner:
        if (map->m_owner)
            map->m_groups = map->m_owner->groups();
        map->m_available = map->m_owner != nullptr;
        break;
    case ColorMode::lastModified:
    case ColorMode::created: {
        auto kind = mode == ColorMode::lastModified ? ModeBucketMaps::DateKind::modified : ModeBucketMaps::DateKind::created;
        map->m_buckets = sources.buckets ? std::move(sources.buckets) : ModeBucketMaps::dates(tree, kind, map->m_boundaries);
        map->m_groups = dateGroups();
        map->m_available = map->m_buckets != nullptr;
        break;
    }
    case ColorMode::hiddenFromFinder:
        map->m_buckets = sources.buckets ? std::move(sources.buckets) : ModeBucketMaps::hidden(tree);
        map->m_groups = { ColorGroup::visible(), ColorGroup::hidden() };
        map->m_available = map->m_buckets != nullptr;
        break;
    case ColorMode::onDiskVsSize:
        map->m_available = true;
        break;
    }
    return map;
}

bool ColorMap::isFolder(NodeID node) const
{
    return isContainer(m_tree->kind(node));
}

NodeColor ColorMap::color(NodeID node) const
{
    if (!m_available || !m_tree || node.value < 0 || node.value >= m_tree->count())
        return NodeColor::unknown();
    switch (m_mode) {
    case ColorMode::contentType:
        return groupColor(m_content ? &m_content->buckets() : nullptr, node);
    case ColorMode::owner:
        return groupColor(m_owner ? &m_owner->buckets() : nullptr, node);
    case ColorMode::lastModified:
    case ColorMode::created:
        return dateColor(node);
    case ColorMode::caches:
        return cachesColor(node);
    case ColorMode::hiddenFromFinder:
        return hiddenColor(node);
    case ColorMode::onDiskVsSize:
        return ratioColor(node);
    }
    return NodeColor::unknown();
}

NodeColor ColorMap::groupColor(const BucketMap* map, NodeID node) const
{
    if (!map)
        return NodeColor::unknown();
    std::optional<int> bucket = map->dominantBucket(node);
    if (bucket && static_cast<std::size_t>(*bucket) < m_groups.size())
        return NodeColor::group(m_groups[static_cast<std::size_t>(*bucket)]);
    return isFolder(node) ? NodeColor::mixed() : NodeColor::unknown();
}

NodeColor ColorMap::dateColor(NodeID node) const
{
    if (m_tree->allocatedSize(node) == 0) {
        // Nothing to weigh: an empty folder or file goes by its own date.
        std::span<const std::int32_t> seconds = m_mode == ColorMode::lastModified ? m_tree->modifiedSeconds() : m_tree->createdSeconds();
        std::optional<DateGroup> group = m_boundaries.group(seconds[node.index()]);
        return group ? NodeColor::group(ColorGroup::date(*group)) : NodeColor::unknown();
    }
    return groupColor(m_buckets.get(), node);
}

NodeColor ColorMap::cachesColor(NodeID node) const
{
    const BucketMap& buckets = m_content->buckets();
    const int caches = ContentCategories::raw(ContentCategory::caches);
    if (!isFolder(node)) {
        std::uint8_t category = buckets.categories()[node.index()];
        if (category >= ContentCategories::count)
            return NodeColor::unknown();
        return NodeColor::share(category == caches ? 1.0 : 0.0);
    }
    std::vector<std::int64_t> totals = buckets.totals(node);
    return shareOf(totals[static_cast<std::size_t>(caches)], sum(totals));
}

NodeColor ColorMap::hiddenColor(NodeID node) const
{
    if (!isFolder(node) && m_tree->allocatedSize(node) == 0)
        return NodeColor::share(m_tree->isHiddenFromFinder(node).value_or(false) ? 1.0 : 0.0);
    std::vector<std::int64_t> totals = m_buckets->totals(node);
    return shareOf(totals[ModeBucketMaps::hiddenBucket], sum(totals));
}

NodeColor ColorMap::ratioColor(NodeID node) const
{
    std::int64_t logical = m_tree->logicalSize(node);
    NodeFlags flags = m_tree->flags(node);
    if (logical < 1 || flags.contains(NodeFlag::incomplete) || flags.contains(NodeFlag::logicalIncomplete))
        return NodeColor::unknown();
    return NodeColor::ratio(static_cast<double>(m_tree->allocatedSize(node)) / static_cast<double>(logical));
}

}
