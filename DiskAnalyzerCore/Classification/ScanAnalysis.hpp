#pragma once

#include "Classification/BucketMap.hpp"
#include "Classification/ColorMap.hpp"
#include "Classification/ColorMode.hpp"
#include "Classification/ContentMap.hpp"
#include "Classification/DateGroup.hpp"
#include "Classification/ModeMaps.hpp"
#include "Classification/OwnerBuckets.hpp"
#include "Classification/OwnerMap.hpp"

#include <array>
#include <memory>

namespace tarnwick {

class OwnerPlaces;
class ScanTree;

// Everything a finished scan is coloured, summed up and saved with, made once off the main
// thread and then only read: the content map, who owns the space, the bucket maps of the
// date and visibility modes for one calendar day, and each mode's colour map over them. The
// window, the commands and the snapshot all read these, so they cannot disagree; the legend's
// figures for the scan's root are the rows these maps keep for it.
class ScanAnalysis {
public:
    // boundaries are the calendar day the date maps describe: for a finished scan, the
    // day it finished, which its snapshot records. Without owner places the owner mode is
    // not available.
    static std::shared_ptr<const ScanAnalysis> make(std::shared_ptr<const ScanTree> tree, const DateGroup::Boundaries& boundaries,
        const OwnerPlaces* ownerPlaces);
    // The same analysis on another calendar day: the date maps are made again for it, the
    // rest is shared with this one.
    [[nodiscard]] std::shared_ptr<const ScanAnalysis> redated(const DateGroup::Boundaries& boundaries) const;

    [[nodiscard]] const std::shared_ptr<const ScanTree>& tree() const { return m_tree; }
    [[nodiscard]] const DateGroup::Boundaries& boundaries() const { return m_boundaries; }
    // Every map; owners and ownerBuckets are null without owner places.
    [[nodiscard]] const ModeMaps& maps() const { return m_maps; }
    [[nodiscard]] const std::shared_ptr<const ContentMap>& content() const { return m_maps.content; }
    [[nodiscard]] const std::shared_ptr<const OwnerMap>& owners() const { return m_maps.owners; }
    [[nodiscard]] const std::shared_ptr<const OwnerBuckets>& ownerBuckets() const { return m_maps.ownerBuckets; }
    [[nodiscard]] const std::shared_ptr<const BucketMap>& modified() const { return m_maps.modified; }
    [[nodiscard]] const std::shared_ptr<const BucketMap>& created() const { return m_maps.created; }
    [[nodiscard]] const std::shared_ptr<const BucketMap>& hidden() const { return m_maps.hidden; }
    [[nodiscard]] const std::shared_ptr<const ColorMap>& colors(ColorMode mode) const { return m_colors[static_cast<std::size_t>(mode)]; }

private:
    ScanAnalysis() = default;
    void makeColors();

    std::shared_ptr<const ScanTree> m_tree;
    DateGroup::Boundaries m_boundaries;
    ModeMaps m_maps;
    std::array<std::shared_ptr<const ColorMap>, allColorModes.size()> m_colors;
};

}
