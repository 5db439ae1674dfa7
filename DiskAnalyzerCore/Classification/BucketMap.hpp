#pragma once

#include "Classification/BucketShare.hpp"
#include "Classification/BucketTotals.hpp"
#include "Scanning/NodeID.hpp"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

namespace tarnwick {

class ScanTree;

// How the bytes of every folder of one tree split over the buckets (colour groups) of one
// mode. Built once in two linear passes; afterwards each folder keeps only its dominant
// bucket, and only the root and large folders keep their whole row. Immutable and shared.
class BucketMap {
public:
    // Folders at least this large on disk keep their row of totals after the build.
    static constexpr std::int64_t retentionSize = 10'000'000;
    static constexpr std::uint8_t noBucket = 255;

    using StoredTotals = std::unordered_map<NodeID, BucketTotals>;
    // Per folder, how its bytes not covered by child nodes split; used in their order.
    using Rests = std::unordered_map<NodeID, std::vector<BucketShare>>;

    struct Input {
        // One byte per node: the bucket of a node that is not a folder (ignored for folders).
        std::vector<std::uint8_t> categories;
        // One byte per node: the bucket that takes a folder's bytes not covered by its children.
        std::vector<std::uint8_t> fallbacks;
        // Rows supplied from outside (a snapshot, for example); they stand for their whole subtree.
        StoredTotals storedTotals;
        Rests rests;
        std::int64_t retentionBytes = retentionSize;
    };

    // No map (null) when width is outside 1..254, unknown is not below width, or the byte
    // arrays do not hold one entry per node; callers then show unknown.
    static std::shared_ptr<const BucketMap> build(std::shared_ptr<const ScanTree> tree, int width, int unknown, Input input);

    struct Plan {
        int width = 0;
        int unknown = 0;
        Input input;
    };
    // Several maps of one tree in one pass, each as build() makes it, in the order of the
    // plans (null for a plan build() would refuse). The pass's cost is in reaching each
    // node's parent row, which it does once for all of them.
    static std::vector<std::shared_ptr<const BucketMap>> buildTogether(std::shared_ptr<const ScanTree> tree, std::vector<Plan> plans);

    [[nodiscard]] std::int32_t nodeCount() const { return m_nodeCount; }
    [[nodiscard]] int width() const { return m_width; }
    [[nodiscard]] int unknown() const { return m_unknown; }
    [[nodiscard]] const ScanTree& tree() const { return *m_tree; }
    // After the build a folder's byte holds its dominant bucket, or noBucket.
    [[nodiscard]] std::span<const std::uint8_t> categories() const { return m_categories; }
    [[nodiscard]] std::span<const std::uint8_t> fallbacks() const { return m_fallbacks; }
    [[nodiscard]] const StoredTotals& storedTotals() const { return m_storedTotals; }
    [[nodiscard]] const Rests& rests() const { return m_rests; }

    // width byte counts: a folder's split of its subtree (kept, or worked out again from
    // the subtree for a small folder); for any other node its size in its own bucket.
    [[nodiscard]] std::vector<std::int64_t> totals(NodeID node) const;
    [[nodiscard]] std::int64_t bytes(int bucket, NodeID node) const;
    // The bucket holding at least half of a folder's bytes (the lower one on a tie); a
    // node that is not a folder has its own bucket. Absent when there is none.
    [[nodiscard]] std::optional<int> dominantBucket(NodeID node) const;
    // The buckets of a set of nodes together, counting nodes inside other nodes of the set
    // once; only buckets with bytes, in bucket order.
    [[nodiscard]] std::vector<BucketShare> shares(std::span<const NodeID> nodes) const;

private:
    BucketMap() = default;
    [[nodiscard]] int bucketOf(int byte) const { return byte >= 0 && byte < m_width ? byte : m_unknown; }
    [[nodiscard]] bool isFolder(std::size_t node) const;
    [[nodiscard]] bool isValid(NodeID node) const { return node.value >= 0 && node.value < m_nodeCount; }
    // Adds a folder's uncovered bytes to a row: split by its rests, or all to its fallback.
    void addUncovered(NodeID folder, std::int64_t uncovered, std::int64_t* row) const;
    [[nodiscard]] const BucketTotals* supplied(NodeID folder) const;
    // The bottom-up pass: every folder's row of every map, side by side in matrix.
    static void sumRows(const ScanTree& tree, const std::vector<std::shared_ptr<BucketMap>>& maps, const std::vector<std::size_t>& offsets,
        const std::vector<std::int32_t>& folderNumber, std::vector<std::int64_t>& matrix, std::size_t stride);
    // From the summed rows: each folder's dominant bucket, and the rows worth keeping.
    void keepDominant(const std::vector<std::int32_t>& folderNumber, const std::int64_t* rows, std::size_t stride, std::int64_t retentionBytes);
    void fillSubtreeTotals(NodeID folder, std::int64_t* row) const;

    std::shared_ptr<const ScanTree> m_tree;
    std::int32_t m_nodeCount = 0;
    int m_width = 0;
    int m_unknown = 0;
    std::vector<std::uint8_t> m_categories;
    std::vector<std::uint8_t> m_fallbacks;
    StoredTotals m_storedTotals;
    Rests m_rests;
};

}
