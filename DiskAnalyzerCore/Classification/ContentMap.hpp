#pragma once

#include "Classification/BucketMap.hpp"
#include "Classification/ContentCategory.hpp"
#include "Classification/ContentClassifier.hpp"
#include "Classification/ContentShare.hpp"
#include "Classification/ContentTotals.hpp"

#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace tarnwick {

class ScanTree;

// Per-folder content totals of one tree: a bucket map of the 13 content categories built
// from the classifier, where a folder's uncovered bytes count in the category of the rule
// in force inside it (or its rest parts, for a tree made from a snapshot).
class ContentMap {
public:
    // Classifies the tree and builds its totals.
    static std::shared_ptr<const ContentMap> build(std::shared_ptr<const ScanTree> tree);
    // From a classification made before, with optional rows supplied from outside.
    static std::shared_ptr<const ContentMap> build(std::shared_ptr<const ScanTree> tree, ContentClassifier::Classification classification,
        BucketMap::StoredTotals storedTotals = {});

    [[nodiscard]] const BucketMap& buckets() const { return *m_buckets; }
    [[nodiscard]] ContentTotals totals(NodeID node) const;
    // Categories with bytes, in category order.
    [[nodiscard]] std::vector<ContentShare> shares(NodeID node) const;
    // Several nodes together, nested ones counted once.
    [[nodiscard]] std::vector<ContentShare> shares(std::span<const NodeID> nodes) const;
    // The category of a file, or the one holding at least half of a folder's bytes.
    [[nodiscard]] std::optional<ContentCategory> category(NodeID node) const;

private:
    explicit ContentMap(std::shared_ptr<const BucketMap> buckets)
        : m_buckets(std::move(buckets))
    {
    }
    std::shared_ptr<const BucketMap> m_buckets;
};

}
