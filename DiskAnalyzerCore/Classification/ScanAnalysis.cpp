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
    // Each map is one pass over the same read-only tree, independent of the others: two
    // threads make them in about half the time, which keeps a large scan's colours from
    // reaching the window later than the content map alone did.
    auto contentAndHidden = std::async(std::launch::async, [tree, analysis] {
        analysis->m_content = ContentMap::build(tree);
        analysis->m_hidden = ModeBucketMaps::hidden(tree);
    });
    if (ownerPlaces) {
        analysis->m_owners = std::make_shared<const OwnerMap>(OwnerMap::build(*tree, *ownerPlaces));
        analysis->m_ownerBuckets = analysis->m_owners->buckets(tree);
    }
    analysis->m_modified = ModeBucketMaps::dates(tree, ModeBucketMaps::DateKind::modified, boundaries);
    analysis->m_created = ModeBucketMaps::dates(tree, ModeBucketMaps::DateKind::created, boundaries);
    contentAndHidden.get();
    analysis->makeColors();
    return analysis;
}

std::shared_ptr<const ScanAnalysis> ScanAnalysis::redated(const DateGroup::Boundaries& boundaries) const
{
    std::shared_ptr<ScanAnalysis> analysis(new ScanAnalysis(*this));
    analysis->m_boundaries = boundaries;
    analysis->m_modified = ModeBucketMaps::dates(m_tree, ModeBucketMaps::DateKind::modified, boundaries);
    analysis->m_created = ModeBucketMaps::dates(m_tree, ModeBucketMaps::DateKind::created, boundaries);
    analysis->makeColors();
    return analysis;
}

void ScanAnalysis::makeColors()
{
    for (ColorMode mode : allColorModes) {
        ColorMap::Sources sources { m_content, m_ownerBuckets, m_boundaries, nullptr };
        if (mode == ColorMode::lastModified)
            sources.buckets = m_modified;
        else if (mode == ColorMode::created)
            sources.buckets = m_created;
        else if (mode == ColorMode::hiddenFromFinder)
            sources.buckets = m_hidden;
        m_colors[static_cast<std::size_t>(mode)] = ColorMap::make(mode, m_tree, std::move(sources));
    }
}

}
