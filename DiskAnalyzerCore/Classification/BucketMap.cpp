#include "Classification/BucketMap.hpp"

#include "Scanning/ScanTree.hpp"
#include "Support/SaturatingMath.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_set>

namespace tarnwick {

namespace {

std::int64_t rowSum(const std::int64_t* row, int width)
{
    std::int64_t total = 0;
    for (int b = 0; b < width; ++b)
        SaturatingMath::add(total, row[b]);
    return total;
}

std::optional<int> dominantOf(const std::int64_t* row, int width)
{
    int best = 0;
    for (int b = 1; b < width; ++b) {
        if (row[b] > row[best])
            best = b;
    }
    if (row[best] <= 0)
        return std::nullopt;
    std::int64_t others = 0;
    for (int b = 0; b < width; ++b) {
        if (b != best)
            SaturatingMath::add(others, row[b]);
    }
    if (row[best] < others)
        return std::nullopt;
    return best;
}

void addRow(std::int64_t* into, const std::int64_t* row, int width)
{
    for (int b = 0; b < width; ++b)
        SaturatingMath::add(into[b], row[b]);
}

BucketTotals totalsOfRow(const std::int64_t* row, int width)
{
    return BucketTotals { rowSum(row, width), std::vector<std::int64_t>(row, row + width) };
}

}

bool BucketMap::isFolder(std::size_t node) const
{
    return isContainer(m_tree->kinds()[node]);
}

const BucketTotals* BucketMap::supplied(NodeID folder) const
{
    if (m_storedTotals.empty())
        return nullptr;
    auto found = m_storedTotals.find(folder);
    if (found == m_storedTotals.end() || found->second.buckets.size() != static_cast<std::size_t>(m_width))
        return nullptr;
    return &found->second;
}

void BucketMap::addUncovered(NodeID folder, std::int64_t uncovered, std::int64_t* row) const
{
    if (uncovered <= 0)
        return;
    if (!m_rests.empty()) {
        auto found = m_rests.find(folder);
        if (found != m_rests.end() && !found->second.empty()) {
            const std::vector<BucketShare>& parts = found->second;
            std::int64_t partTotal = 0;
            for (const BucketShare& part : parts)
                SaturatingMath::add(partTotal, std::max<std::int64_t>(part.bytes, 0));
            if (partTotal > 0) {
                std::int64_t remaining = uncovered;
                for (std::size_t i = 0; i < parts.size(); ++i) {
                    std::int64_t given = remaining;
                    if (i + 1 < parts.size()) {
                        double share = std::floor(static_cast<double>(uncovered) * static_cast<double>(std::max<std::int64_t>(parts[i].bytes, 0))
                            / static_cast<double>(partTotal));
                        given = share >= static_cast<double>(remaining) ? remaining : std::max<std::int64_t>(static_cast<std::int64_t>(share), 0);
                    }
                    SaturatingMath::add(row[bucketOf(parts[i].bucket)], given);
                    remaining -= given;
                }
                return;
            }
        }
    }
    SaturatingMath::add(row[bucketOf(m_fallbacks[folder.index()])], uncovered);
}

std::shared_ptr<const BucketMap> BucketMap::build(std::shared_ptr<const ScanTree> tree, int width, int unknown, Input input)
{
    std::vector<Plan> plans;
    plans.push_back(Plan { width, unknown, std::move(input) });
    return buildTogether(std::move(tree), std::move(plans)).front();
}

std::vector<std::shared_ptr<const BucketMap>> BucketMap::buildTogether(std::shared_ptr<const ScanTree> tree, std::vector<Plan> plans)
{
    std::vector<std::shared_ptr<const BucketMap>> result(plans.size());
    if (!tree)
        return result;
    const auto n = static_cast<std::size_t>(std::max(tree->count(), 0));
    // The maps being built, each with where its part of a folder's row starts.
    std::vector<std::shared_ptr<BucketMap>> maps;
    std::vector<std::size_t> offsets;
    std::vector<std::int64_t> retentionBytes;
    std::size_t stride = 0;
    for (std::size_t k = 0; k < plans.size(); ++k) {
        Plan& plan = plans[k];
        if (plan.width < 1 || plan.width >= 255 || plan.unknown < 0 || plan.unknown >= plan.width)
            continue;
        if (plan.input.categories.size() != n || plan.input.fallbacks.size() != n)
            continue;
        std::shared_ptr<BucketMap> map(new BucketMap());
        map->m_tree = tree;
        map->m_nodeCount = static_cast<std::int32_t>(n);
        map->m_width = plan.width;
        map->m_unknown = plan.unknown;
        map->m_categories = std::move(plan.input.categories);
        map->m_fallbacks = std::move(plan.input.fallbacks);
        map->m_storedTotals = std::move(plan.input.storedTotals);
        map->m_rests = std::move(plan.input.rests);
        result[k] = map;
        maps.push_back(std::move(map));
        offsets.push_back(stride);
        retentionBytes.push_back(plan.input.retentionBytes);
        stride += static_cast<std::size_t>(plan.width);
    }
    if (maps.empty())
        return result;

    // Dense folder numbers in node order.
    std::span<const NodeKind> kinds = tree->kinds();
    std::vector<std::int32_t> folderNumber(n, -1);
    std::int32_t folderCount = 0;
    for (std::size_t i = 0; i < n; ++i) {
        if (isContainer(kinds[i]))
            folderNumber[i] = folderCount++;
    }
    std::vector<std::int64_t> matrix(static_cast<std::size_t>(folderCount) * stride, 0);
    sumRows(*tree, maps, offsets, folderNumber, matrix, stride);
    for (std::size_t m = 0; m < maps.size(); ++m)
        maps[m]->keepDominant(folderNumber, matrix.data() + offsets[m], stride, retentionBytes[m]);
    return result;
}

void BucketMap::sumRows(const ScanTree& tree, const std::vector<std::shared_ptr<BucketMap>>& maps, const std::vector<std::size_t>& offsets,
    const std::vector<std::int32_t>& folderNumber, std::vector<std::int64_t>& matrix, std::size_t stride)
{
    const std::size_t n = folderNumber.size();
    std::span<const std::int32_t> parents = tree.parents();
    std::span<const std::int64_t> allocated = tree.allocatedSizes();
    std::vector<std::int64_t> childSums(matrix.size() / stride, 0);
    auto rowOf = [&](std::size_t node) { return matrix.data() + static_cast<std::size_t>(folderNumber[node]) * stride; };

    // Children come after their parents, so by the time the pass reaches a folder its row
    // already holds every child; it then takes its uncovered bytes and moves up. The rows of
    // all maps lie side by side, so each parent's row is reached once for all of them.
    auto settle = [&](std::size_t folder) {
        std::int64_t* row = rowOf(folder);
        std::int64_t uncovered = allocated[folder] - childSums[static_cast<std::size_t>(folderNumber[folder])];
        const NodeID id { static_cast<std::int32_t>(folder) };
        for (std::size_t m = 0; m < maps.size(); ++m) {
            maps[m]->addUncovered(id, uncovered, row + offsets[m]);
            if (const BucketTotals* given = maps[m]->supplied(id))
                std::copy(given->buckets.begin(), given->buckets.end(), row + offsets[m]);
        }
    };
    // What the pass reads of each map for every file, at hand.
    struct Part {
        const std::uint8_t* categories;
        std::size_t offset;
        int width;
        int unknown;
    };
    std::vector<Part> parts;
    for (std::size_t m = 0; m < maps.size(); ++m)
        parts.push_back(Part { maps[m]->m_categories.data(), offsets[m], maps[m]->m_width, maps[m]->m_unknown });
    for (std::size_t i = n; i-- > 1;) {
        auto parent = static_cast<std::size_t>(parents[i]);
        if (parents[i] < 0 || folderNumber[parent] < 0)
            continue;
        std::int64_t* parentRow = rowOf(parent);
        if (folderNumber[i] >= 0) {
            settle(i);
            addRow(parentRow, rowOf(i), static_cast<int>(stride));
        } else {
            for (const Part& part : parts) {
                int byte = part.categories[i];
                SaturatingMath::add(parentRow[part.offset + static_cast<std::size_t>(byte < part.width ? byte : part.unknown)], allocated[i]);
            }
        }
        SaturatingMath::add(childSums[static_cast<std::size_t>(folderNumber[parent])], allocated[i]);
    }
    if (n > 0 && folderNumber[0] >= 0)
        settle(0);
}

void BucketMap::keepDominant(const std::vector<std::int32_t>& folderNumber, const std::int64_t* rows, std::size_t stride, std::int64_t retentionBytes)
{
    // Keep each folder's dominant bucket, and whole rows only where they are worth their memory.
    std::span<const std::int64_t> allocated = m_tree->allocatedSizes();
    const std::size_t n = folderNumber.size();
    auto isRetained = [&](std::size_t folder) { return folder == 0 || allocated[folder] >= retentionBytes; };
    std::size_t retained = m_storedTotals.size();
    for (std::size_t i = 0; i < n; ++i)
        retained += folderNumber[i] >= 0 && isRetained(i) ? 1 : 0;
    m_storedTotals.reserve(retained);
    for (std::size_t i = 0; i < n; ++i) {
        if (folderNumber[i] < 0)
            continue;
        const std::int64_t* row = rows + static_cast<std::size_t>(folderNumber[i]) * stride;
        std::optional<int> dominant = dominantOf(row, m_width);
        m_categories[i] = dominant ? static_cast<std::uint8_t>(*dominant) : noBucket;
        if (isRetained(i)) // a supplied row stays as it was given
            m_storedTotals.try_emplace(NodeID { static_cast<std::int32_t>(i) }, totalsOfRow(row, m_width));
    }
}

void BucketMap::fillSubtreeTotals(NodeID folder, std::int64_t* row) const
{
    std::span<const std::int64_t> allocated = m_tree->allocatedSizes();
    std::vector<NodeID> pending { folder };
    while (!pending.empty()) {
        NodeID current = pending.back();
        pending.pop_back();
        std::int64_t childSum = 0;
        for (NodeID child : m_tree->children(current)) {
            std::int64_t size = allocated[child.index()];
            SaturatingMath::add(childSum, size);
            if (!isFolder(child.index())) {
                SaturatingMath::add(row[bucketOf(m_categories[child.index()])], size);
            } else if (auto found = m_storedTotals.find(child); found != m_storedTotals.end() && found->second.buckets.size() == static_cast<std::size_t>(m_width)) {
                addRow(row, found->second.buckets.data(), m_width);
            } else {
                pending.push_back(child);
            }
        }
        addUncovered(current, allocated[current.index()] - childSum, row);
    }
}

std::vector<std::int64_t> BucketMap::totals(NodeID node) const
{
    std::vector<std::int64_t> row(static_cast<std::size_t>(m_width), 0);
    if (!isValid(node))
        return row;
    if (!isFolder(node.index())) {
        row[static_cast<std::size_t>(bucketOf(m_categories[node.index()]))] = m_tree->allocatedSizes()[node.index()];
        return row;
    }
    if (auto found = m_storedTotals.find(node); found != m_storedTotals.end() && found->second.buckets.size() == row.size())
        return found->second.buckets;
    fillSubtreeTotals(node, row.data());
    return row;
}

std::int64_t BucketMap::bytes(int bucket, NodeID node) const
{
    if (bucket < 0 || bucket >= m_width || !isValid(node))
        return 0;
    if (!isFolder(node.index()))
        return bucketOf(m_categories[node.index()]) == bucket ? m_tree->allocatedSizes()[node.index()] : 0;
    return totals(node)[static_cast<std::size_t>(bucket)];
}

std::optional<int> BucketMap::dominantBucket(NodeID node) const
{
    if (!isValid(node))
        return std::nullopt;
    std::uint8_t byte = m_categories[node.index()];
    if (byte >= m_width)
        return std::nullopt;
    return byte;
}

std::vector<BucketShare> BucketMap::shares(std::span<const NodeID> nodes) const
{
    std::vector<NodeID> selected;
    std::unordered_set<NodeID> chosen;
    for (NodeID node : nodes) {
        if (isValid(node) && chosen.insert(node).second)
            selected.push_back(node);
    }
    // Ascending, so that a node's row is still whole when it is taken out of the one around it.
    std::sort(selected.begin(), selected.end());
    std::vector<std::vector<std::int64_t>> rows;
    rows.reserve(selected.size());
    std::unordered_map<NodeID, std::size_t> rowIndex;
    for (NodeID node : selected) {
        rowIndex[node] = rows.size();
        rows.push_back(totals(node));
    }
    // Each node leaves its bytes out of the nearest chosen node around it, which already
    // counts them; the result is the union of the set.
    for (std::size_t i = 0; i < selected.size(); ++i) {
        for (std::optional<NodeID> up = m_tree->parent(selected[i]); up; up = m_tree->parent(*up)) {
            if (!chosen.contains(*up))
                continue;
            std::vector<std::int64_t>& outer = rows[rowIndex[*up]];
            for (std::size_t b = 0; b < outer.size(); ++b)
                outer[b] = std::max<std::int64_t>(outer[b] - rows[i][b], 0);
            break;
        }
    }
    std::vector<std::int64_t> sum(static_cast<std::size_t>(m_width), 0);
    for (const std::vector<std::int64_t>& row : rows)
        addRow(sum.data(), row.data(), m_width);
    std::vector<BucketShare> result;
    for (int b = 0; b < m_width; ++b) {
        if (sum[static_cast<std::size_t>(b)] > 0)
            result.push_back(BucketShare { b, sum[static_cast<std::size_t>(b)] });
    }
    return result;
}

}
