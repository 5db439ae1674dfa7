#include "Scanning/TreeBuilder.hpp"

#include "Scanning/ScanTree.hpp"

#include <algorithm>
#include <cassert>
#include <limits>

namespace tarnwick {

namespace {

constexpr std::uint8_t bit(NodeFlag flag) { return static_cast<std::uint8_t>(flag); }

}

TreeBuilder::TreeBuilder(std::string_view rootName, NodeKind kind, std::optional<std::uint64_t> fileID, std::size_t reservingCapacity)
{
    m_names.reserve(reservingCapacity);
    m_parents.reserve(reservingCapacity);
    m_kinds.reserve(reservingCapacity);
    m_flags.reserve(reservingCapacity);
    m_allocated.reserve(reservingCapacity);
    m_logical.reserve(reservingCapacity);
    m_fileIDs.reserve(reservingCapacity);
    m_modified.reserve(reservingCapacity);
    m_created.reserve(reservingCapacity);
    m_hidden.reserve(reservingCapacity);
    m_names.append(rootName);
    m_parents.push_back(-1);
    m_kinds.push_back(kind);
    m_flags.push_back(0);
    m_allocated.push_back(0);
    m_logical.push_back(0);
    m_fileIDs.push_back(fileID.value_or(0));
    m_modified.push_back(TreeDate::noDate);
    m_created.push_back(TreeDate::noDate);
    m_hidden.push_back(0);
}

NodeID TreeBuilder::addNode(NodeID parent, const Entry& entry)
{
    return addNode(parent, entry.name, entry.kind, entry.allocatedSize, entry.logicalSize, entry.fileID.value_or(0),
        TreeDate::encode(entry.modified), TreeDate::encode(entry.created), entry.hidden);
}

NodeID TreeBuilder::addNode(NodeID parent, std::string_view name, NodeKind kind, std::optional<std::int64_t> allocatedSize,
    std::optional<std::int64_t> logicalSize, std::uint64_t fileID, std::int32_t modified, std::int32_t created, bool hidden)
{
    assert(parent.value >= 0 && parent.value < count() && "addNode needs an existing parent");
    assert(count() < std::numeric_limits<std::int32_t>::max() && "a tree holds fewer than 2^31-1 nodes");
    std::uint8_t flags = 0;
    std::int64_t allocated = 0;
    std::int64_t logical = 0;
    if (isContainer(kind)) {
        // A folder's own blocks are real space (about 2 MB for 100,000 names on ext4); what it
        // holds is added by the roll-up.
        allocated = std::max<std::int64_t>(allocatedSize.value_or(0), 0);
    } else if (!hasOnlyRolledUpSize(kind)) {
        if (allocatedSize)
            allocated = std::max<std::int64_t>(*allocatedSize, 0);
        else
            flags |= bit(NodeFlag::allocatedUnknown);
        if (logicalSize)
            logical = std::max<std::int64_t>(*logicalSize, 0);
        else
            flags |= bit(NodeFlag::logicalUnknown);
    }
    NodeID id { count() };
    m_names.append(name);
    m_parents.push_back(parent.value);
    m_kinds.push_back(kind);
    m_flags.push_back(flags);
    m_allocated.push_back(allocated);
    m_logical.push_back(logical);
    m_fileIDs.push_back(fileID);
    m_modified.push_back(modified);
    m_created.push_back(created);
    m_hidden.push_back(hidden ? 1 : 0);
    return id;
}

void TreeBuilder::noteCreationWithoutNode(NodeID folder, std::optional<Date> created)
{
    std::int32_t seconds = TreeDate::encode(created);
    if (seconds == TreeDate::noDate)
        return;
    auto [entry, inserted] = m_oldestWithoutNodes.try_emplace(folder.value, seconds);
    if (!inserted)
        entry->second = std::min(entry->second, seconds);
}

void TreeBuilder::setMetadata(NodeID node, std::optional<Date> modified, std::optional<Date> created, bool hidden)
{
    m_modified[node.index()] = TreeDate::encode(modified);
    m_created[node.index()] = TreeDate::encode(created);
    m_hidden[node.index()] = hidden ? 1 : 0;
}

void TreeBuilder::addSizesWithoutNodes(NodeID folder, std::int64_t allocated, std::int64_t logical, bool includesUnknown)
{
    std::size_t i = folder.index();
    bool allocatedOverflow = SaturatingMath::add(m_allocated[i], allocated);
    bool logicalOverflow = SaturatingMath::add(m_logical[i], logical);
    if (includesUnknown || allocatedOverflow)
        m_flags[i] |= bit(NodeFlag::incomplete);
    if (includesUnknown || logicalOverflow)
        m_flags[i] |= bit(NodeFlag::logicalIncomplete);
    if (allocatedOverflow || logicalOverflow)
        m_flags[i] |= bit(NodeFlag::overflow);
}

void TreeBuilder::recordIssue(NodeID node, IssueKind kind, int code, std::string message)
{
    m_flags[node.index()] |= bit(NodeFlag::hasIssue);
    m_issues.push_back(ScanIssue { node, kind, code, std::move(message) });
}

void TreeBuilder::noteHardLink(NodeID node, std::uint64_t device, std::uint64_t fileID)
{
    m_hardLinks.push_back(HardLink { device, fileID, node.value });
}

std::string TreeBuilder::pathFromRoot(std::int32_t node) const
{
    std::vector<std::string_view> names;
    for (std::int32_t i = node; i > 0; i = m_parents[static_cast<std::size_t>(i)])
        names.push_back(m_names[static_cast<std::size_t>(i)]);
    std::string path;
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        path += '/';
        path += *name;
    }
    return path;
}

std::unordered_map<std::int32_t, std::int32_t> TreeBuilder::settleHardLinks()
{
    std::unordered_map<std::int32_t, std::int32_t> carriers;
    auto sameFile = [](const HardLink& a, const HardLink& b) { return a.device == b.device && a.fileID == b.fileID; };
    std::sort(m_hardLinks.begin(), m_hardLinks.end(), [](const HardLink& a, const HardLink& b) {
        return a.device != b.device ? a.device < b.device : a.fileID != b.fileID ? a.fileID < b.fileID : a.node < b.node;
    });
    for (auto first = m_hardLinks.begin(); first != m_hardLinks.end();) {
        auto last = std::find_if_not(first, m_hardLinks.end(), [&](const HardLink& link) { return sameFile(link, *first); });
        if (last - first > 1) {
            // The carrier does not depend on the order the workers happened to list folders in.
            std::int32_t carrier = first->node;
            std::string carrierPath = pathFromRoot(carrier);
            for (auto link = first + 1; link != last; ++link) {
                std::string path = pathFromRoot(link->node);
                if (path < carrierPath) {
                    carrier = link->node;
                    carrierPath = std::move(path);
                }
            }
            for (auto link = first; link != last; ++link) {
                if (link->node == carrier)
                    continue;
                auto i = static_cast<std::size_t>(link->node);
                m_allocated[i] = 0;
                m_logical[i] = 0;
                carriers.emplace(link->node, carrier);
            }
        }
        first = last;
    }
    m_hardLinks = {};
    return carriers;
}

std::optional<NodeID> TreeBuilder::parent(NodeID node) const
{
    std::int32_t p = m_parents[node.index()];
    if (p < 0)
        return std::nullopt;
    return NodeID { p };
}

std::optional<std::int32_t> TreeBuilder::oldestWithoutNodes(NodeID folder) const
{
    auto found = m_oldestWithoutNodes.find(folder.value);
    if (found == m_oldestWithoutNodes.end())
        return std::nullopt;
    return found->second;
}

std::size_t TreeBuilder::byteCount() const
{
    std::size_t n = m_kinds.size();
    return m_names.byteCount() + n * (4 + 4 + 1 + 1 + 8 + 8 + 8 + 4 + 4 + 1) + m_issues.size() * sizeof(ScanIssue);
}

namespace {

// Own-flag completion: what a node's own unknowns and unread contents mean for its totals.
std::uint8_t completedFlags(std::uint8_t flags)
{
    constexpr std::uint8_t unknownBits = bit(NodeFlag::allocatedUnknown) | bit(NodeFlag::logicalUnknown) | bit(NodeFlag::scanning);
    if (flags & bit(NodeFlag::contentsUnread))
        return flags | bit(NodeFlag::incomplete) | bit(NodeFlag::logicalIncomplete);
    if (flags & (bit(NodeFlag::allocatedUnknown) | bit(NodeFlag::scanning))) {
        flags |= bit(NodeFlag::incomplete);
        if ((flags & unknownBits) != bit(NodeFlag::allocatedUnknown))
            flags |= bit(NodeFlag::logicalIncomplete);
        return flags;
    }
    if (flags & bit(NodeFlag::logicalUnknown))
        flags |= bit(NodeFlag::logicalIncomplete);
    return flags;
}

}

std::shared_ptr<const ScanTree> TreeBuilder::finalize(std::string rootPath, ScanCoverage coverage, Metadata metadata,
    std::shared_ptr<const RestBuckets> rests) &&
{
    const std::size_t n = m_kinds.size();
    std::shared_ptr<ScanTree> tree(new ScanTree());
    tree->m_rootPath = std::move(rootPath);
    tree->m_coverage = std::move(coverage);
    tree->m_rests = std::move(rests);

    // Oldest items: leaves are dated by their own creation; folders only by what is inside.
    MappedColumn<std::int32_t> oldest;
    oldest.resize(n, TreeDate::noDate);
    std::vector<bool> dated(n, false);
    for (std::size_t i = 0; i < n; ++i) {
        if (!hasOnlyRolledUpSize(m_kinds[i])) {
            oldest[i] = m_created[i];
            dated[i] = true;
        }
    }
    for (auto [folder, seconds] : m_oldestWithoutNodes) {
        oldest[static_cast<std::size_t>(folder)] = seconds;
        dated[static_cast<std::size_t>(folder)] = true;
    }

    // Visibility: parents come first, so one ascending pass settles inheritance.
    if (metadata == Metadata::included) {
        for (std::size_t i = 0; i < n; ++i) {
            bool hidden = m_hidden[i] & 1;
            if (!hidden && i > 0) {
                std::string_view name = m_names[i];
                hidden = (!name.empty() && name.front() == '.') || (m_hidden[static_cast<std::size_t>(m_parents[i])] & 2);
            }
            if (hidden)
                m_hidden[i] |= 2;
        }
    }

    for (std::size_t i = 0; i < n; ++i)
        m_flags[i] = completedFlags(m_flags[i]);
    tree->m_hardLinkCarriers = settleHardLinks();

    // Roll-up: one descending pass, because every parent's number is smaller.
    for (std::size_t i = n - 1; i >= 1; --i) {
        std::size_t p = static_cast<std::size_t>(m_parents[i]);
        m_modified[p] = std::max(m_modified[p], m_modified[i]);
        if (dated[i]) {
            if (oldest[i] != TreeDate::noDate && (oldest[p] == TreeDate::noDate || oldest[i] < oldest[p]))
                oldest[p] = oldest[i];
            dated[p] = true;
        }
        bool allocatedOverflow = SaturatingMath::add(m_allocated[p], m_allocated[i]);
        bool logicalOverflow = SaturatingMath::add(m_logical[p], m_logical[i]);
        std::uint8_t child = m_flags[i];
        if ((child & bit(NodeFlag::incomplete)) || allocatedOverflow)
            m_flags[p] |= bit(NodeFlag::incomplete);
        if ((child & bit(NodeFlag::logicalIncomplete)) || logicalOverflow)
            m_flags[p] |= bit(NodeFlag::logicalIncomplete);
        if (allocatedOverflow || logicalOverflow)
            m_flags[p] |= bit(NodeFlag::overflow);
    }
    for (std::size_t i = 0; i < n; ++i) {
        if (hasOnlyRolledUpSize(m_kinds[i]) && !dated[i])
            oldest[i] = m_created[i];
    }
    dated = {};

    // Children: counting pass for the slices, then each slice sorted into display order.
    MappedColumn<std::int32_t> childStart;
    childStart.resize(n + 1, 0);
    for (std::size_t i = 1; i < n; ++i)
        ++childStart[static_cast<std::size_t>(m_parents[i]) + 1];
    for (std::size_t i = 1; i <= n; ++i)
        childStart[i] += childStart[i - 1];
    MappedColumn<NodeID> ordered;
    ordered.resize(n > 0 ? n - 1 : 0);
    {
        MappedColumn<std::int32_t> next;
        next.resize(n);
        std::copy(childStart.begin(), childStart.begin() + static_cast<std::ptrdiff_t>(n), next.begin());
        for (std::size_t i = 1; i < n; ++i)
            ordered[static_cast<std::size_t>(next[static_cast<std::size_t>(m_parents[i])]++)] = NodeID { static_cast<std::int32_t>(i) };
    }
    // Display order: larger first, then by name in byte order, then by number. The first
    // eight bytes of each name ride along in the sort key, so most ties between equal sizes
    // are settled without looking the names up.
    struct SortKey {
        std::int64_t size;
        std::uint64_t prefix;
        NodeID node;
    };
    auto prefixOf = [this](NodeID node) {
        std::string_view name = m_names[node.index()];
        std::uint64_t prefix = 0;
        for (std::size_t b = 0; b < 8; ++b)
            prefix = (prefix << 8) | (b < name.size() ? static_cast<unsigned char>(name[b]) : 0u);
        return prefix;
    };
    auto displayOrder = [this](const SortKey& a, const SortKey& b) {
        if (a.size != b.size)
            return a.size > b.size;
        if (a.prefix != b.prefix)
            return a.prefix < b.prefix;
        int byName = m_names[a.node.index()].compare(m_names[b.node.index()]);
        if (byName != 0)
            return byName < 0;
        return a.node.value < b.node.value;
    };
    std::vector<SortKey> keys;
    for (std::size_t i = 0; i < n; ++i) {
        auto first = ordered.begin() + childStart[i];
        auto last = ordered.begin() + childStart[i + 1];
        if (last - first < 2)
            continue;
        keys.clear();
        for (auto child = first; child != last; ++child)
            keys.push_back(SortKey { m_allocated[child->index()], prefixOf(*child), *child });
        std::sort(keys.begin(), keys.end(), displayOrder);
        for (const SortKey& key : keys)
            *first++ = key.node;
    }

    tree->m_issues = std::move(m_issues);
    for (std::size_t i = 0; i < tree->m_issues.size(); ++i)
        tree->m_firstIssueByNode.try_emplace(tree->m_issues[i].node.value, static_cast<std::int32_t>(i));
    tree->m_names = std::move(m_names);
    tree->m_parents = std::move(m_parents);
    tree->m_kinds = std::move(m_kinds);
    tree->m_flags = std::move(m_flags);
    tree->m_allocated = std::move(m_allocated);
    tree->m_logical = std::move(m_logical);
    tree->m_modified = std::move(m_modified);
    tree->m_created = std::move(m_created);
    tree->m_oldest = std::move(oldest);
    if (metadata == Metadata::included)
        tree->m_finderHidden = std::move(m_hidden);
    tree->m_fileIDs = std::move(m_fileIDs);
    tree->m_childStart = std::move(childStart);
    tree->m_orderedChildren = std::move(ordered);
    m_oldestWithoutNodes = {};
    return tree;
}

}
