#pragma once

#include "Classification/BucketMap.hpp"
#include "Classification/ColorGroup.hpp"
#include "Classification/ColorMode.hpp"
#include "Classification/ContentMap.hpp"
#include "Classification/DateGroup.hpp"
#include "Classification/NodeColor.hpp"
#include "Classification/OwnerBuckets.hpp"

#include <memory>
#include <optional>
#include <vector>

namespace tarnwick {

class ScanTree;

// The colour of every node of one tree in one mode. A finished scan's come made with its
// ScanAnalysis; a tree without one (a running scan's preview, a saved day) has them made per
// mode, the maps made before passed in again when only the mode changes.
class ColorMap {
public:
    struct Sources {
        // Built from the tree when a mode needs it and none is given.
        std::shared_ptr<const ContentMap> content;
        // Without it the owner mode is not available.
        std::shared_ptr<const OwnerBuckets> owner;
        // The system calendar's, at the time of making, when absent.
        std::optional<DateGroup::Boundaries> boundaries;
        // The date or visibility map of those modes, made with the boundaries above; built
        // from the tree when absent.
        std::shared_ptr<const BucketMap> buckets;
    };

    static std::shared_ptr<const ColorMap> make(ColorMode mode, std::shared_ptr<const ScanTree> tree, Sources sources = {});

    [[nodiscard]] ColorMode mode() const { return m_mode; }
    // The group of each bucket, in bucket order.
    [[nodiscard]] const std::vector<ColorGroup>& groups() const { return m_groups; }
    [[nodiscard]] const std::shared_ptr<const ContentMap>& content() const { return m_content; }
    [[nodiscard]] const std::shared_ptr<const OwnerBuckets>& owner() const { return m_owner; }
    // The date or visibility bucket map of those modes.
    [[nodiscard]] const std::shared_ptr<const BucketMap>& buckets() const { return m_buckets; }
    [[nodiscard]] const DateGroup::Boundaries& boundaries() const { return m_boundaries; }
    [[nodiscard]] bool available() const { return m_available; }

    [[nodiscard]] NodeColor color(NodeID node) const;

private:
    ColorMap() = default;
    [[nodiscard]] bool isFolder(NodeID node) const;
    [[nodiscard]] NodeColor groupColor(const BucketMap* map, NodeID node) const;
    [[nodiscard]] NodeColor dateColor(NodeID node) const;
    [[nodiscard]] NodeColor cachesColor(NodeID node) const;
    [[nodiscard]] NodeColor hiddenColor(NodeID node) const;
    [[nodiscard]] NodeColor ratioColor(NodeID node) const;

    ColorMode m_mode = ColorMode::contentType;
    std::shared_ptr<const ScanTree> m_tree;
    std::vector<ColorGroup> m_groups;
    std::shared_ptr<const ContentMap> m_content;
    std::shared_ptr<const OwnerBuckets> m_owner;
    std::shared_ptr<const BucketMap> m_buckets;
    DateGroup::Boundaries m_boundaries;
    bool m_available = false;
};

}
