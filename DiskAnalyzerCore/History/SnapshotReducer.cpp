#include "History/SnapshotReducer.hpp"

#include "History/LocalDays.hpp"
#include "History/SnapshotLayout.hpp"
#include "Scanning/ScanTree.hpp"

#include <array>

namespace tarnwick::SnapshotReducer {

namespace {

struct KeptNodes {
    std::vector<NodeID> nodes;          // snapshot index -> tree node
    std::vector<std::int32_t> parents;  // snapshot index -> snapshot index of the parent
};

// Pre-order with an explicit stack. Children come in display order, largest first, so the
// ones that reach the threshold are a prefix and the walk never looks at the small rest.
KeptNodes keptInPreOrder(const ScanTree& tree, std::int64_t threshold)
{
    KeptNodes kept;
    if (tree.count() == 0)
        return kept;
    std::vector<std::pair<NodeID, std::int32_t>> stack { { NodeID::root(), -1 } };
    while (!stack.empty()) {
        auto [node, parent] = stack.back();
        stack.pop_back();
        auto index = static_cast<std::int32_t>(kept.nodes.size());
        kept.nodes.push_back(node);
        kept.parents.push_back(parent);
        ScanTree::Children children = tree.children(node);
        std::size_t large = 0;
        while (large < children.size() && tree.allocatedSize(children[large]) >= threshold)
            ++large;
        for (std::size_t j = large; j-- > 0;) {
            if (isContainer(tree.kind(children[j])))
                stack.emplace_back(children[j], index);
        }
    }
    return kept;
}

// The kept children of every kept node, as slices of one array.
struct KeptChildren {
    std::vector<std::int32_t> start; // count + 1 entries
    std::vector<std::int32_t> list;

    explicit KeptChildren(const std::vector<std::int32_t>& parents)
        : start(parents.size() + 1, 0)
        , list(parents.empty() ? 0 : parents.size() - 1)
    {
        for (std::size_t i = 1; i < parents.size(); ++i)
            ++start[static_cast<std::size_t>(parents[i]) + 1];
        for (std::size_t i = 1; i < start.size(); ++i)
            start[i] += start[i - 1];
        std::vector<std::int32_t> next(start.begin(), start.end() - 1);
        for (std::size_t i = 1; i < parents.size(); ++i)
            list[static_cast<std::size_t>(next[static_cast<std::size_t>(parents[i])]++)] = static_cast<std::int32_t>(i);
    }
    [[nodiscard]] std::span<const std::int32_t> of(std::size_t node) const
    {
        return std::span(list).subspan(static_cast<std::size_t>(start[node]), static_cast<std::size_t>(start[node + 1] - start[node]));
    }
};

// One mode's bucket rows for every kept node: the retained rows of the map (every kept
// folder is large enough to have one), or rows worked out again where a map lacks one.
struct ModeRows {
    RestMode mode;
    std::vector<std::span<const std::int64_t>> rows;
    std::vector<std::vector<std::int64_t>> workedOut;

    ModeRows(RestMode restMode, const BucketMap& map, const std::vector<NodeID>& nodes)
        : mode(restMode)
    {
        rows.reserve(nodes.size());
        const auto width = static_cast<std::size_t>(map.width());
        for (NodeID node : nodes) {
            auto found = map.storedTotals().find(node);
            if (found != map.storedTotals().end() && found->second.buckets.size() == width) {
                rows.emplace_back(found->second.buckets);
            } else {
                workedOut.push_back(map.totals(node));
                rows.emplace_back(workedOut.back());
            }
        }
    }
};

std::vector<ModeRows> modeRows(const SnapshotColors& colors, const std::vector<NodeID>& nodes)
{
    std::vector<ModeRows> result;
    result.reserve(SnapshotLayout::restModeCount);
    if (colors.content)
        result.emplace_back(RestMode::content, colors.content->buckets(), nodes);
    if (colors.modified)
        result.emplace_back(RestMode::modified, *colors.modified, nodes);
    if (colors.created)
        result.emplace_back(RestMode::created, *colors.created, nodes);
    if (colors.hidden)
        result.emplace_back(RestMode::hidden, *colors.hidden, nodes);
    return result;
}

// What of a kept folder its kept children do not account for, per bucket of each mode.
void addRests(Snapshot& snapshot, const std::vector<ModeRows>& modes, const KeptChildren& children, std::size_t node)
{
    std::vector<RestPart> parts;
    for (const ModeRows& mode : modes) {
        std::span<const std::int64_t> own = mode.rows[node];
        std::array<std::int64_t, 16> rest {};
        const std::size_t width = std::min(own.size(), std::min(rest.size(), static_cast<std::size_t>(SnapshotLayout::restKeyCount(mode.mode))));
        std::copy_n(own.begin(), width, rest.begin());
        for (std::int32_t child : children.of(node)) {
            std::span<const std::int64_t> row = mode.rows[static_cast<std::size_t>(child)];
            for (std::size_t b = 0; b < width && b < row.size(); ++b) {
                if (__builtin_sub_overflow(rest[b], row[b], &rest[b]))
                    rest[b] = 0;
            }
        }
        for (std::size_t b = 0; b < width; ++b) {
            if (rest[b] > 0)
                parts.push_back(RestPart { mode.mode, static_cast<std::uint8_t>(b), rest[b] });
        }
    }
    if (!parts.empty())
        snapshot.restContent.parts.emplace(NodeID { static_cast<std::int32_t>(node) }, std::move(parts));
}

void addColors(Snapshot& snapshot, const ScanTree& tree, const KeptNodes& kept, const SnapshotColors& colors, const TimeZone& zone)
{
    const std::size_t n = kept.nodes.size();
    snapshot.hasColors = true;
    snapshot.preciseAllocated.resize(n);
    snapshot.logical.resize(n);
    snapshot.hidden.resize(n);
    snapshot.lastChangeDays.assign(n, Snapshot::unknownDay);
    snapshot.oldestItemDays.assign(n, Snapshot::unknownDay);
    for (std::int64_t day : colors.boundaries.days)
        snapshot.restDays.push_back(static_cast<std::int32_t>(std::clamp<std::int64_t>(day, std::numeric_limits<std::int32_t>::min() + 1,
            std::numeric_limits<std::int32_t>::max())));

    LocalDays days(zone);
    const std::vector<ModeRows> modes = modeRows(colors, kept.nodes);
    const KeptChildren children(kept.parents);
    std::span<const std::int32_t> modified = tree.modifiedSeconds();
    std::span<const std::int32_t> oldest = tree.oldestSeconds();
    std::span<const std::int32_t> created = tree.createdSeconds();
    snapshot.restContent.parts.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        NodeID node = kept.nodes[i];
        snapshot.preciseAllocated[i] = tree.allocatedSize(node);
        snapshot.logical[i] = tree.logicalSize(node);
        snapshot.hidden[i] = tree.isHiddenFromFinder(node).value_or(false);
        if (!isContainer(tree.kind(node)))
            continue;
        snapshot.lastChangeDays[i] = days.day(modified[node.index()]);
        snapshot.oldestItemDays[i] = days.day(oldest[node.index()]);
        std::int32_t ownCreation = days.day(created[node.index()]);
        if (ownCreation != Snapshot::unknownDay)
            snapshot.ownCreationDays.emplace_hint(snapshot.ownCreationDays.end(), static_cast<std::int32_t>(i), ownCreation);
        addRests(snapshot, modes, children, i);
    }
}

}

Snapshot reduce(const ScanTree& tree, const Options& options)
{
    Snapshot snapshot;
    snapshot.date = SnapshotDates::truncatedToMicroseconds(options.date);
    snapshot.rootPath = tree.rootPath();
    snapshot.volume = options.volume;
    snapshot.coverage = tree.coverage();
    KeptNodes kept = keptInPreOrder(tree, snapshot.threshold);
    const std::size_t n = kept.nodes.size();
    const std::uint8_t flagMask = options.colors ? SnapshotLayout::colorFlagMask : SnapshotLayout::plainFlagMask;
    snapshot.names.reserve(n);
    snapshot.kinds.reserve(n);
    snapshot.flags.reserve(n);
    snapshot.allocated.reserve(n);
    for (NodeID node : kept.nodes) {
        snapshot.names.emplace_back(tree.name(node));
        snapshot.kinds.push_back(tree.kind(node));
        snapshot.flags.push_back(NodeFlags(tree.flags(node).raw & flagMask));
        std::int64_t size = std::max<std::int64_t>(tree.allocatedSize(node), 0);
        snapshot.allocated.push_back(size / snapshot.threshold * snapshot.threshold);
    }
    if (options.colors)
        addColors(snapshot, tree, kept, *options.colors, options.zone ? *options.zone : TimeZone::system());
    snapshot.parents = std::move(kept.parents);
    return snapshot;
}

}
