#pragma once

#include "Classification/ColorGroup.hpp"
#include "Classification/OwnerBuckets.hpp"
#include "Classification/OwnerPlaces.hpp"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

class ScanTree;

// Who owns the bytes of one tree, in the groups the owner mode shows: the largest apps,
// the system, no owner, and the smaller apps together as other apps. Made in one pass over
// the nodes in node order; feeds the owner mode's bucket map.
class OwnerMap {
public:
    struct Options {
        // An app with less than this share of the tree's bytes joins other apps...
        double minimumShare = 0.01;
        // ...and so does every app after the largest ones.
        std::size_t maximumOwners = 12;
    };

    struct Owner {
        ColorGroup group;
        std::string displayName;
        // The bytes the owner holds in the tree (sizes on disk).
        std::int64_t bytes = 0;
    };

    static constexpr std::string_view noOwnerName = "No owner";
    static constexpr std::string_view otherAppsName = "Other apps";

    static OwnerMap build(const ScanTree& tree, const OwnerPlaces& places, Options options);
    static OwnerMap build(const ScanTree& tree, const OwnerPlaces& places) { return build(tree, places, Options {}); }

    // In bucket order: the apps kept, largest first, then the system, no owner and other apps.
    [[nodiscard]] const std::vector<Owner>& owners() const { return m_owners; }
    // The apps inside other apps, largest first: "Owner combines an app's places" also for them.
    [[nodiscard]] const std::vector<Owner>& folded() const { return m_folded; }
    // One byte per node: its owner bucket.
    [[nodiscard]] const std::vector<std::uint8_t>& nodeBuckets() const { return m_nodeBuckets; }
    [[nodiscard]] std::optional<int> bucket(const ColorGroup& group) const;
    [[nodiscard]] std::optional<std::string_view> displayName(const ColorGroup& group) const;

    // For the owner mode's bucket map; the unknown bucket is no owner.
    [[nodiscard]] OwnerBuckets::Assignment assignment() const;
    [[nodiscard]] std::shared_ptr<const OwnerBuckets> buckets(std::shared_ptr<const ScanTree> tree) const;

private:
    std::vector<Owner> m_owners;
    std::vector<Owner> m_folded;
    std::vector<std::uint8_t> m_nodeBuckets;
};

}
