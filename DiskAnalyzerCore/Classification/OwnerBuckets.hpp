#pragma once

#include "Classification/BucketMap.hpp"
#include "Classification/ColorGroup.hpp"

#include <memory>
#include <vector>

namespace tarnwick {

class ScanTree;

// The owner mode's bucket map: which owner (an application, macOS, no owner or other
// apps) each node's bytes belong to. The assignment of owners comes from owner
// attribution; this only turns it into per-folder totals.
class OwnerBuckets {
public:
    struct Assignment {
        // Bucket order; every group must be an owner-mode group.
        std::vector<ColorGroup> groups;
        // One byte per node: the owner bucket of a node that is not a folder.
        std::vector<std::uint8_t> categories;
        // One byte per node: the owner bucket of a folder's bytes not covered by its children.
        std::vector<std::uint8_t> fallbacks;
        // The bucket that takes what cannot be placed.
        int unknown = 0;
    };

    // Null when the groups are empty, more than 254, not all owner-mode groups, or the
    // assignment does not fit the tree.
    static std::shared_ptr<const OwnerBuckets> build(std::shared_ptr<const ScanTree> tree, Assignment assignment);

    [[nodiscard]] const std::vector<ColorGroup>& groups() const { return m_groups; }
    [[nodiscard]] const BucketMap& buckets() const { return *m_buckets; }

private:
    OwnerBuckets(std::vector<ColorGroup> groups, std::shared_ptr<const BucketMap> buckets)
        : m_groups(std::move(groups))
        , m_buckets(std::move(buckets))
    {
    }
    std::vector<ColorGroup> m_groups;
    std::shared_ptr<const BucketMap> m_buckets;
};

}
