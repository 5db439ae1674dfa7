#include "TreeQueries/TreeSearch.hpp"

#include "Scanning/ScanTree.hpp"
#include "Support/SaturatingMath.hpp"

#include <algorithm>
#include <chrono>

namespace tarnwick::TreeSearch {

namespace {

bool isLarger(const Item& a, const Item& b)
{
    return a.allocated != b.allocated ? a.allocated > b.allocated : a.node < b.node;
}

// Keeps the largest `limit` items offered; the heap's front is the smallest kept.
class LargestFirst {
public:
    explicit LargestFirst(int limit)
        : m_limit(static_cast<std::size_t>(std::max(limit, 0)))
    {
    }

    void offer(Item item)
    {
        if (m_items.size() < m_limit) {
            m_items.push_back(item);
            std::push_heap(m_items.begin(), m_items.end(), isLarger);
        } else if (m_limit > 0 && isLarger(item, m_items.front())) {
            std::pop_heap(m_items.begin(), m_items.end(), isLarger);
            m_items.back() = item;
            std::push_heap(m_items.begin(), m_items.end(), isLarger);
        }
    }

    // Anything smaller than this can no longer be kept.
    [[nodiscard]] std::int64_t smallestKept() const
    {
        return m_items.empty() || m_items.size() < m_limit ? 0 : m_items.front().allocated;
    }

    std::vector<Item> sorted() &&
    {
        std::sort(m_items.begin(), m_items.end(), isLarger);
        return std::move(m_items);
    }

private:
    std::size_t m_limit;
    std::vector<Item> m_items;
};

// Dates compared in the tree's stored form: whole seconds since 2001, floored.
std::int64_t storedSeconds(Date date)
{
    auto seconds = std::chrono::floor<std::chrono::seconds>(date.time_since_epoch()).count();
    return static_cast<std::int64_t>(seconds) - TreeDate::referenceUnixSeconds;
}

struct Filter {
    const ScanTree& tree;
    NodeKindSet kinds;
    std::int64_t minimumSize;
    const std::optional<NamePattern>& pattern;
    std::optional<std::int64_t> before;
    std::optional<std::int64_t> after;
    std::span<const NodeKind> kindColumn = tree.kinds();
    std::span<const std::int64_t> sizes = tree.allocatedSizes();
    std::span<const std::int32_t> modified = tree.modifiedSeconds();

    // The cheap column tests first; the name only for what passes them.
    bool passes(std::int32_t node) const
    {
        auto i = static_cast<std::size_t>(node);
        if (!kinds.contains(kindColumn[i]) || sizes[i] < minimumSize)
            return false;
        if (before || after) {
            std::int32_t seconds = modified[i];
            if (seconds == TreeDate::noDate || (before && seconds >= *before) || (after && seconds < *after))
                return false;
        }
        return !pattern || pattern->matches(tree.name(NodeID { node }));
    }
};

bool isPassThrough(const ScanTree& tree, NodeID folder)
{
    ScanTree::Children children = tree.children(folder);
    if (children.empty() || !isContainer(tree.kind(children.front())))
        return false;
    return static_cast<double>(tree.allocatedSize(children.front())) >= passThroughShare * static_cast<double>(tree.allocatedSize(folder));
}

}

Found largestItems(const ScanTree& tree, NodeID below, NodeKindSet kinds, std::int64_t minimumSize,
    const std::optional<NamePattern>& namePattern, const AgeFilter& age, int limit)
{
    (void)tree.kind(below); // a node out of range is a caller's error and traps here
    Filter filter { tree, kinds, minimumSize, namePattern, {}, {} };
    if (age.changedBefore)
        filter.before = storedSeconds(*age.changedBefore);
    if (age.changedAfter)
        filter.after = storedSeconds(*age.changedAfter);

    // A subtree's numbers are not contiguous, but a parent always comes before its children:
    // one forward pass marks what lies below `below` and what lies inside a match.
    constexpr std::uint8_t inside = 1;
    constexpr std::uint8_t insideMatch = 2;
    const std::int32_t first = below.value;
    const std::int32_t count = tree.count();
    std::span<const std::int32_t> parents = tree.parents();
    std::vector<std::uint8_t> state(static_cast<std::size_t>(count - first), 0);
    state[0] = inside;

    Found found;
    LargestFirst largest(limit);
    for (std::int32_t node = first + 1; node < count; ++node) {
        std::int32_t parent = parents[static_cast<std::size_t>(node)];
        if (parent < first)
            continue;
        std::uint8_t parentState = state[static_cast<std::size_t>(parent - first)];
        if (parentState == 0)
            continue;
        std::uint8_t own = parentState;
        if (filter.passes(node)) {
            std::int64_t size = filter.sizes[static_cast<std::size_t>(node)];
            ++found.matchCount;
            if ((parentState & insideMatch) == 0) {
                if (SaturatingMath::add(found.matchedBytes, size) || tree.isIncomplete(NodeID { node }))
                    found.matchedIncomplete = true;
            }
            own |= insideMatch;
            largest.offer(Item { NodeID { node }, size });
        }
        state[static_cast<std::size_t>(node - first)] = own;
    }
    found.items = std::move(largest).sorted();
    return found;
}

std::vector<Item> largestPlaces(const ScanTree& tree, NodeID below, std::int64_t minimumSize, int limit)
{
    if (limit < 1)
        return {};
    const std::int64_t threshold = std::max<std::int64_t>(minimumSize, 1);
    LargestFirst largest(limit);
    std::vector<NodeID> work;
    // Children come largest first: the first one too small ends the folder's list. Sizes
    // never grow downwards, so nothing below a folder too small to keep is visited either.
    auto queueFolders = [&](NodeID folder) {
        std::int64_t smallest = std::max(threshold, largest.smallestKept());
        for (NodeID child : tree.children(folder)) {
            if (tree.allocatedSize(child) < smallest)
                break;
            if (isContainer(tree.kind(child)))
                work.push_back(child);
        }
    };
    if (isContainer(tree.kind(below)))
        queueFolders(below);
    while (!work.empty()) {
        NodeID folder = work.back();
        work.pop_back();
        bool isPackage = tree.kind(folder) == NodeKind::package;
        if (isPackage || !isPassThrough(tree, folder))
            largest.offer(Item { folder, tree.allocatedSize(folder) });
        if (!isPackage)
            queueFolders(folder);
    }
    return std::move(largest).sorted();
}

}
