#include "History/SnapshotReducer.hpp"

#include "History/LocalDays.hpp"
#include "History/SnapshotLayout.hpp"
#include "Scanning/ScanTree.hpp"

#include <algorithm>
#include <cassert>
#include <numeric>

namespace tarnwick::SnapshotReducer {

namespace {

// The kept nodes in tree order (parents before children, ascending node numbers). Every
// pass over them reads the tree's columns front to back, which matters more for speed than
// anything else here: a kept folder's columns are far apart in a large tree.
struct KeptNodes {
    std::vector<NodeID> nodes;
    std::vector<std::int32_t> parents;  // index into nodes; -1 for the root
    std::vector<std::int32_t> position; // index in the snapshot (pre-order)
};

// Tree node -> index into KeptNodes::nodes: open addressing, small enough to stay in the
// cache while parents are matched against it.
class KeptIndex {
public:
    explicit KeptIndex(const std::vector<NodeID>& nodes)
    {
        std::size_t capacity = 16;
        while (capacity < nodes.size() * 2)
            capacity *= 2;
        m_slots.assign(capacity, { -1, -1 });
        m_mask = capacity - 1;
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            std::size_t slot = hash(nodes[i].value);
            while (m_slots[slot].first >= 0)
                slot = (slot + 1) & m_mask;
            m_slots[slot] = { nodes[i].value, static_cast<std::int32_t>(i) };
        }
    }
    [[nodiscard]] std::int32_t find(std::int32_t node) const
    {
        for (std::size_t slot = hash(node);; slot = (slot + 1) & m_mask) {
            if (m_slots[slot].first == node)
                return m_slots[slot].second;
            if (m_slots[slot].first < 0)
                return -1;
        }
    }

private:
    [[nodiscard]] std::size_t hash(std::int32_t node) const { return (static_cast<std::uint32_t>(node) * 2654435761u) & m_mask; }
    std::vector<std::pair<std::int32_t, std::int32_t>> m_slots;
    std::size_t m_mask = 0;
};

// Keeps the root and every folder or package of at least threshold bytes whose parent is
// kept: one pass, because a parent's number is always smaller than its children's.
std::vector<NodeID> keptInTreeOrder(const ScanTree& tree, std::int64_t threshold)
{
    std::vector<NodeID> kept;
    const auto n = static_cast<std::size_t>(std::max(tree.count(), 0));
    if (n == 0)
        return kept;
    std::span<const NodeKind> kinds = tree.kinds();
    std::span<const std::int64_t> sizes = tree.allocatedSizes();
    std::span<const std::int32_t> parents = tree.parents();
    std::vector<bool> isKept(n, false);
    isKept[0] = true;
    kept.push_back(NodeID::root());
    for (std::size_t i = 1; i < n; ++i) {
        if (isContainer(kinds[i]) && sizes[i] >= threshold && isKept[static_cast<std::size_t>(parents[i])]) {
            isKept[i] = true;
            kept.push_back(NodeID { static_cast<std::int32_t>(i) });
        }
    }
    return kept;
}

// Positions in pre-order, siblings in the tree's display order (larger first, then name,
// then node number): subtree sizes bottom-up, then each child placed after the subtrees of
// its earlier siblings. Loops only.
std::vector<std::int32_t> preOrderPositions(const ScanTree& tree, const std::vector<NodeID>& nodes, const std::vector<std::int32_t>& parents)
{
    const std::size_t n = nodes.size();
    std::vector<std::int32_t> start(n + 1, 0);
    for (std::size_t i = 1; i < n; ++i)
        ++start[static_cast<std::size_t>(parents[i]) + 1];
    std::partial_sum(start.begin(), start.end(), start.begin());
    std::vector<std::int32_t> children(n > 0 ? n - 1 : 0);
    {
        std::vector<std::int32_t> next(start.begin(), start.end() - 1);
        for (std::size_t i = 1; i < n; ++i)
            children[static_cast<std::size_t>(next[static_cast<std::size_t>(parents[i])]++)] = static_cast<std::int32_t>(i);
    }
    std::span<const std::int64_t> sizes = tree.allocatedSizes();
    auto displayOrder = [&](std::int32_t a, std::int32_t b) {
        NodeID na = nodes[static_cast<std::size_t>(a)], nb = nodes[static_cast<std::size_t>(b)];
        if (sizes[na.index()] != sizes[nb.index()])
            return sizes[na.index()] > sizes[nb.index()];
        int byName = tree.name(na).compare(tree.name(nb));
        return byName != 0 ? byName < 0 : na.value < nb.value;
    };
    std::vector<std::int32_t> subtree(n, 1);
    for (std::size_t i = n; i-- > 1;)
        subtree[static_cast<std::size_t>(parents[i])] += subtree[i];
    std::vector<std::int32_t> position(n, 0);
    for (std::size_t i = 0; i < n; ++i) {
        auto first = children.begin() + start[i];
        auto last = children.begin() + start[i + 1];
        if (last - first > 1)
            std::sort(first, last, displayOrder);
        std::int32_t next = position[i] + 1;
        for (auto child = first; child != last; ++child) {
            position[static_cast<std::size_t>(*child)] = next;
            next += subtree[static_cast<std::size_t>(*child)];
        }
    }
    return position;
}

KeptNodes keptNodes(const ScanTree& tree, std::int64_t threshold)
{
    KeptNodes kept;
    kept.nodes = keptInTreeOrder(tree, threshold);
    const KeptIndex index(kept.nodes);
    std::span<const std::int32_t> treeParents = tree.parents();
    kept.parents.resize(kept.nodes.size(), -1);
    for (std::size_t i = 1; i < kept.nodes.size(); ++i)
        kept.parents[i] = index.find(treeParents[kept.nodes[i].index()]);
    kept.position = preOrderPositions(tree, kept.nodes, kept.parents);
    return kept;
}

// One mode's rests for every kept node, in snapshot order, as a dense matrix: each kept
// folder's row of the bucket map (every kept folder is large enough for the map to have
// kept its row; a row the map lacks is worked out again), less its kept children's rows.
// Reading the maps' rows is most of the cost of a reduction with colours (their memory is
// scattered); it grows with the number of kept folders, not with the size of the tree.
struct ModeRests {
    RestMode mode;
    std::size_t width;
    std::vector<std::int64_t> rows;

    ModeRests(RestMode restMode, const BucketMap& map, const KeptNodes& kept, const std::vector<std::int32_t>& positionOfNode)
        : mode(restMode)
        , width(static_cast<std::size_t>(std::min(map.width(), SnapshotLayout::restKeyCount(restMode))))
        , rows(kept.nodes.size() * width, 0)
    {
        const std::size_t n = kept.nodes.size();
        std::vector<bool> filled(n, false);
        // Walking the map's own order reads its rows about front to back in memory.
        for (const auto& [node, totals] : map.storedTotals()) {
            if (node.value < 0 || static_cast<std::size_t>(node.value) >= positionOfNode.size() || totals.buckets.size() < width)
                continue;
            std::int32_t at = positionOfNode[node.index()];
            if (at < 0)
                continue;
            std::copy_n(totals.buckets.begin(), width, rows.begin() + static_cast<std::ptrdiff_t>(static_cast<std::size_t>(at) * width));
            filled[static_cast<std::size_t>(at)] = true;
        }
        for (std::size_t k = 0; k < n; ++k) {
            auto at = static_cast<std::size_t>(kept.position[k]);
            if (!filled[at]) {
                std::vector<std::int64_t> row = map.totals(kept.nodes[k]);
                std::copy_n(row.begin(), std::min(row.size(), width), rows.begin() + static_cast<std::ptrdiff_t>(at * width));
            }
        }
    }

    // In pre-order a parent comes first and usually just before its children, and a row is
    // still whole when it is taken from its parent's: only its own children, which come
    // later, change it.
    void subtractChildren(const std::vector<std::int32_t>& parents)
    {
        for (std::size_t i = 1; i < parents.size(); ++i) {
            std::int64_t* parent = &rows[static_cast<std::size_t>(parents[i]) * width];
            const std::int64_t* own = &rows[i * width];
            for (std::size_t b = 0; b < width; ++b) {
                if (__builtin_sub_overflow(parent[b], own[b], &parent[b]))
                    parent[b] = 0;
            }
        }
    }
};

std::vector<ModeRests> modeRests(const ScanAnalysis& analysis, const ScanTree& tree, const KeptNodes& kept, const std::vector<std::int32_t>& parents)
{
    std::vector<std::int32_t> positionOfNode(static_cast<std::size_t>(tree.count()), -1);
    for (std::size_t k = 0; k < kept.nodes.size(); ++k)
        positionOfNode[kept.nodes[k].index()] = kept.position[k];
    std::vector<ModeRests> result;
    result.reserve(SnapshotLayout::restModeCount);
    if (analysis.content())
        result.emplace_back(RestMode::content, analysis.content()->buckets(), kept, positionOfNode);
    if (analysis.modified())
        result.emplace_back(RestMode::modified, *analysis.modified(), kept, positionOfNode);
    if (analysis.created())
        result.emplace_back(RestMode::created, *analysis.created(), kept, positionOfNode);
    if (analysis.hidden())
        result.emplace_back(RestMode::hidden, *analysis.hidden(), kept, positionOfNode);
    for (ModeRests& mode : result)
        mode.subtractChildren(parents);
    return result;
}

void appendRests(std::vector<RestPart>& parts, const std::vector<ModeRests>& modes, std::size_t at)
{
    for (const ModeRests& mode : modes) {
        const std::int64_t* rest = &mode.rows[at * mode.width];
        for (std::size_t b = 0; b < mode.width; ++b) {
            if (rest[b] > 0)
                parts.push_back(RestPart { mode.mode, static_cast<std::uint8_t>(b), rest[b] });
        }
    }
}

void addColors(Snapshot& snapshot, const ScanTree& tree, const KeptNodes& kept, const ScanAnalysis& analysis, const TimeZone& zone)
{
    const std::size_t n = kept.nodes.size();
    snapshot.hasColors = true;
    snapshot.preciseAllocated.resize(n);
    snapshot.logical.resize(n);
    snapshot.hidden.resize(n);
    snapshot.lastChangeDays.assign(n, Snapshot::unknownDay);
    snapshot.oldestItemDays.assign(n, Snapshot::unknownDay);
    for (std::int64_t day : analysis.boundaries().days)
        snapshot.restDays.push_back(static_cast<std::int32_t>(std::clamp<std::int64_t>(day, std::numeric_limits<std::int32_t>::min() + 1,
            std::numeric_limits<std::int32_t>::max())));

    LocalDays days(zone);
    const std::vector<ModeRests> modes = modeRests(analysis, tree, kept, snapshot.parents);
    std::span<const std::int64_t> allocated = tree.allocatedSizes();
    std::span<const std::int64_t> logical = tree.logicalSizes();
    std::span<const std::int32_t> modified = tree.modifiedSeconds();
    std::span<const std::int32_t> oldest = tree.oldestSeconds();
    std::span<const std::int32_t> created = tree.createdSeconds();
    for (std::size_t k = 0; k < n; ++k) {
        const NodeID node = kept.nodes[k];
        const auto at = static_cast<std::size_t>(kept.position[k]);
        snapshot.preciseAllocated[at] = allocated[node.index()];
        snapshot.logical[at] = logical[node.index()];
        snapshot.hidden[at] = tree.isHiddenFromFinder(node).value_or(false);
        if (!isContainer(tree.kind(node)))
            continue;
        snapshot.lastChangeDays[at] = days.day(modified[node.index()]);
        snapshot.oldestItemDays[at] = days.day(oldest[node.index()]);
        std::int32_t ownCreation = days.day(created[node.index()]);
        if (ownCreation != Snapshot::unknownDay)
            snapshot.ownCreationDays.emplace_back(static_cast<std::int32_t>(at), ownCreation);
    }
    std::sort(snapshot.ownCreationDays.begin(), snapshot.ownCreationDays.end());
    snapshot.restContent.firstPart.assign(n + 1, 0);
    snapshot.restContent.parts.reserve(4 * n);
    for (std::size_t at = 0; at < n; ++at) {
        snapshot.restContent.firstPart[at] = static_cast<std::int32_t>(snapshot.restContent.parts.size());
        if (isContainer(snapshot.kinds[at]))
            appendRests(snapshot.restContent.parts, modes, at);
    }
    snapshot.restContent.firstPart[n] = static_cast<std::int32_t>(snapshot.restContent.parts.size());
}

}

Snapshot reduce(const ScanTree& tree, const Options& options)
{
    Snapshot snapshot;
    snapshot.date = SnapshotDates::truncatedToMicroseconds(options.date);
    snapshot.rootPath = tree.rootPath();
    snapshot.volume = options.volume;
    snapshot.coverage = tree.coverage();
    const KeptNodes kept = keptNodes(tree, snapshot.threshold);
    const std::size_t n = kept.nodes.size();
    assert((!options.analysis || options.analysis->tree().get() == &tree) && "a snapshot's colours come from its own tree's analysis");
    const std::uint8_t flagMask = options.analysis ? SnapshotLayout::colorFlagMask : SnapshotLayout::plainFlagMask;
    snapshot.names.resize(n);
    snapshot.parents.resize(n);
    snapshot.kinds.resize(n);
    snapshot.flags.resize(n);
    snapshot.allocated.resize(n);
    std::span<const std::int64_t> sizes = tree.allocatedSizes();
    for (std::size_t k = 0; k < n; ++k) {
        const NodeID node = kept.nodes[k];
        const auto at = static_cast<std::size_t>(kept.position[k]);
        snapshot.names[at] = tree.name(node);
        snapshot.parents[at] = k == 0 ? -1 : kept.position[static_cast<std::size_t>(kept.parents[k])];
        snapshot.kinds[at] = tree.kind(node);
        snapshot.flags[at] = NodeFlags(tree.flags(node).raw & flagMask);
        snapshot.allocated[at] = std::max<std::int64_t>(sizes[node.index()], 0) / snapshot.threshold * snapshot.threshold;
    }
    if (options.analysis)
        addColors(snapshot, tree, kept, *options.analysis, options.zone ? *options.zone : TimeZone::system());
    return snapshot;
}

}
