#include "Classification/ScanAnalysis.hpp"

#include "Classification/ModeBucketMaps.hpp"
#include "Classification/OwnerPlaces.hpp"
#include "Scanning/ScanTree.hpp"

#include <future>

namespace tarnwick {

std::shared_ptr<const ScanAnalysis> ScanAnalysis::make(std::shared_ptr<const ScanTree> tree, const DateGroup::Boundaries& boundaries,
    const OwnerPlaces* ownerPlaces)
{
    if (!tree)
        return nullptr;
    std::shared_ptr<ScanAnalysis> analysis(new ScanAnalysis());
    analysis->m_tree = tree;
    analysis->m_boundaries = boundaries;
    // Each map is its own passes over the same read-only tree. The content map (classifying
    // every name) takes about as long as all the others together, so a second thread makes
    // it while this one makes the rest: a large scan's colours then reach the window about
    // as soon as the content map and the owners alone did, one after the other.
    auto content = std::async(std::launch::async, [tree] { return ContentMap::build(tree); });
    if (ownerPlaces) {
        analysis->m_maps.owners = std::make_shared<const OwnerMap>(OwnerMap::build(*tree, *ownerPlaces));
        analysis->m_maps.ownerBuckets = analysis->m_maps.owners->buckets(tree);
    }
    ModeBucketMaps::Maps own = ModeBucketMaps::together(tree, boundaries, ModeBucketMaps::Visibility::with);
    analysis->m_maps.modified = std::move(own.modified);
    analysis->m_maps.created = std::move(own.created);
    analysis->m_maps.hidden = std::move(own.hidden);
    analysis->m_maps.content = content.get();
    analysis->makeColors();
    return analysis;
}

std::shared_ptr<const ScanAnalysis> ScanAnalysis::redated(const DateGroup::Boundaries& boundaries) const
{
    std::shared_ptr<ScanAnalysis> analysis(new ScanAnalysis(*this));
    analysis->m_boundaries = boundaries;
    ModeBucketMaps::Maps dates = ModeBucketMaps::together(m_tree, boundaries, ModeBucketMaps::Visibility::without);
    analysis->m_maps.modified = std::move(dates.modified);
    analysis->m_maps.created = std::move(dates.created);
    analysis->makeColors();
    return analysis;
}

void ScanAnalysis::makeColors()
{
    for (ColorMode mode : allColorModes) {
        ColorMap::Sources sources { m_maps.content, m_maps.ownerBuckets, m_boundaries, nullptr };
        if (mode == ColorMode::lastModified)
            sources.buckets = m_maps.modified;
        else if (mode == ColorMode::created)
            sources.buckets = m_maps.created;
        else if (mode == ColorMode::hiddenFromFinder)
            sources.buckets = m_maps.hidden;
        m_colors[static_cast<std::size_t>(mode)] = ColorMap::make(mode, m_tree, std::move(sources));
    }
}

}
