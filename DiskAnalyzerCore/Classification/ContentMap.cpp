#include "Classification/ContentMap.hpp"

#include "Classification/RestBuckets.hpp"
#include "Scanning/ScanTree.hpp"
#include "Support/SaturatingMath.hpp"

namespace tarnwick {

namespace {

constexpr int width = static_cast<int>(ContentCategories::count);
constexpr int unknownBucket = ContentCategories::raw(ContentCategory::other);

std::vector<ContentShare> contentShares(const std::vector<BucketShare>& shares)
{
    std::vector<ContentShare> result;
    result.reserve(shares.size());
    for (const BucketShare& share : shares)
        result.push_back(ContentShare { static_cast<ContentCategory>(share.bucket), share.bytes });
    return result;
}

}

std::shared_ptr<const ContentMap> ContentMap::build(std::shared_ptr<const ScanTree> tree)
{
    if (!tree)
        return nullptr;
    ContentClassifier::Classification classification = ContentClassifier::classifyTree(*tree);
    return build(std::move(tree), std::move(classification));
}

std::shared_ptr<const ContentMap> ContentMap::build(std::shared_ptr<const ScanTree> tree, ContentClassifier::Classification classification,
    BucketMap::StoredTotals storedTotals)
{
    if (!tree)
        return nullptr;
    BucketMap::Input input { std::move(classification.categories), std::move(classification.fallbacks), std::move(storedTotals), {} };
    if (const std::shared_ptr<const RestBuckets>& rests = tree->rests())
        input.rests = rests->shares(RestMode::content);
    std::shared_ptr<const BucketMap> buckets = BucketMap::build(std::move(tree), width, unknownBucket, std::move(input));
    if (!buckets)
        return nullptr;
    return std::shared_ptr<const ContentMap>(new ContentMap(std::move(buckets)));
}

ContentTotals ContentMap::totals(NodeID node) const
{
    std::vector<std::int64_t> row = m_buckets->totals(node);
    ContentTotals totals;
    for (std::size_t b = 0; b < totals.categories.size() && b < row.size(); ++b) {
        totals.categories[b] = row[b];
        SaturatingMath::add(totals.bytes, row[b]);
    }
    return totals;
}

std::vector<ContentShare> ContentMap::shares(NodeID node) const
{
    return shares(std::span<const NodeID>(&node, 1));
}

std::vector<ContentShare> ContentMap::shares(std::span<const NodeID> nodes) const
{
    return contentShares(m_buckets->shares(nodes));
}

std::optional<ContentCategory> ContentMap::category(NodeID node) const
{
    std::optional<int> bucket = m_buckets->dominantBucket(node);
    if (!bucket)
        return std::nullopt;
    return ContentCategories::fromRaw(static_cast<std::uint8_t>(*bucket));
}

}
