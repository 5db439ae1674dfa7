#pragma once

#include "Scanning/NodeFlags.hpp"
#include "Scanning/NodeID.hpp"
#include "Scanning/NodeKind.hpp"
#include "Scanning/ScanCoverage.hpp"
#include "Scanning/ScanIssue.hpp"
#include "Scanning/TreeDate.hpp"
#include "Support/MappedColumn.hpp"
#include "Support/NameArena.hpp"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tarnwick {

struct RestBuckets;

// The immutable, column-wise result of one scan. Every folder carries the totals of
// its subtree and its children in display order. Shared read-only between threads.
class ScanTree {
public:
    using Children = std::span<const NodeID>;

    [[nodiscard]] const std::string& rootPath() const { return m_rootPath; }
    [[nodiscard]] const std::vector<ScanIssue>& issues() const { return m_issues; }
    // Set only on a tree made from a snapshot: what its folders held beyond their kept children.
    [[nodiscard]] const std::shared_ptr<const RestBuckets>& rests() const { return m_rests; }
    [[nodiscard]] const ScanCoverage& coverage() const { return m_coverage; }

    [[nodiscard]] std::int32_t count() const { return static_cast<std::int32_t>(m_kinds.size()); }
    [[nodiscard]] std::string_view name(NodeID node) const { return m_names[checked(node)]; }
    [[nodiscard]] NodeKind kind(NodeID node) const { return m_kinds[checked(node)]; }
    [[nodiscard]] NodeFlags flags(NodeID node) const { return NodeFlags(m_flags[checked(node)]); }
    [[nodiscard]] std::optional<NodeID> parent(NodeID node) const;
    [[nodiscard]] Children children(NodeID node) const;
    [[nodiscard]] std::int32_t childCount(NodeID node) const;
    [[nodiscard]] int depth(NodeID node) const;

    [[nodiscard]] std::int64_t allocatedSize(NodeID node) const { return m_allocated[checked(node)]; }
    [[nodiscard]] std::int64_t logicalSize(NodeID node) const { return m_logical[checked(node)]; }
    [[nodiscard]] bool isIncomplete(NodeID node) const { return flags(node).contains(NodeFlag::incomplete); }

    [[nodiscard]] std::optional<Date> lastChangeInside(NodeID node) const { return TreeDate::decode(m_modified[checked(node)]); }
    [[nodiscard]] std::optional<Date> creationDate(NodeID node) const { return TreeDate::decode(m_created[checked(node)]); }
    [[nodiscard]] std::optional<Date> oldestItem(NodeID node) const { return TreeDate::decode(m_oldest[checked(node)]); }
    // Raw stored seconds since 2001 (TreeDate::noDate when absent), for fast passes.
    [[nodiscard]] std::span<const std::int32_t> modifiedSeconds() const { return m_modified.span(); }
    [[nodiscard]] std::span<const std::int32_t> createdSeconds() const { return m_created.span(); }
    [[nodiscard]] std::span<const std::int32_t> oldestSeconds() const { return m_oldest.span(); }
    [[nodiscard]] std::span<const std::int64_t> allocatedSizes() const { return m_allocated.span(); }
    [[nodiscard]] std::span<const std::int64_t> logicalSizes() const { return m_logical.span(); }
    [[nodiscard]] std::span<const NodeKind> kinds() const { return m_kinds.span(); }
    [[nodiscard]] std::span<const std::int32_t> parents() const { return m_parents.span(); }

    // Absent when metadata was not collected (or the number is out of range).
    [[nodiscard]] std::optional<bool> isHiddenFromFinder(NodeID node) const;
    [[nodiscard]] bool hasOwnHiddenAttribute(NodeID node) const;
    [[nodiscard]] std::optional<std::uint64_t> fileIdentifier(NodeID node) const;
    [[nodiscard]] const ScanIssue* issue(NodeID node) const;
    // For a name of a hard-linked file that is counted at another of its names in this tree:
    // that name. Absent for the name that carries the size and for every other node.
    [[nodiscard]] std::optional<NodeID> hardLinkCarrier(NodeID node) const;

    // A node is not its own ancestor.
    [[nodiscard]] bool isAncestor(NodeID ancestor, NodeID node) const;
    // The child of ancestor on the way down to node.
    [[nodiscard]] std::optional<NodeID> topmostAncestor(NodeID node, NodeID below) const;
    // Names from the root's child down to node, joined with "/"; empty for the root.
    [[nodiscard]] std::string relativePath(NodeID node) const;
    [[nodiscard]] std::string path(NodeID node) const;
    // The nodes from the root down to node, root first.
    [[nodiscard]] std::vector<NodeID> chain(NodeID node) const;
    // Reverse lookup of an absolute path (or one relative to the root), tolerant of
    // Unicode normalisation differences between the typed path and the stored names.
    [[nodiscard]] std::optional<NodeID> node(std::string_view atPath) const;
    // True for a folder on the way to (or inside) a place the scan could read in full.
    [[nodiscard]] bool leadsToCoverage(NodeID node) const;
    // Partly readable: on the way to readable places without being read in full itself.
    [[nodiscard]] bool isPartlyReadable(NodeID node) const;

    [[nodiscard]] std::size_t byteCount() const;

private:
    friend class TreeBuilder;
    ScanTree() = default;
    [[nodiscard]] std::size_t checked(NodeID node) const;

    std::string m_rootPath;
    std::vector<ScanIssue> m_issues;
    std::shared_ptr<const RestBuckets> m_rests;
    ScanCoverage m_coverage;
    NameArena m_names;
    MappedColumn<std::int32_t> m_parents;
    MappedColumn<NodeKind> m_kinds;
    MappedColumn<std::uint8_t> m_flags;
    MappedColumn<std::int64_t> m_allocated;
    MappedColumn<std::int64_t> m_logical;
    MappedColumn<std::int32_t> m_modified;
    MappedColumn<std::int32_t> m_created;
    MappedColumn<std::int32_t> m_oldest;
    MappedColumn<std::uint8_t> m_finderHidden; // bit 1 own attribute, bit 2 after inheritance
    MappedColumn<std::uint64_t> m_fileIDs;
    MappedColumn<std::int32_t> m_childStart;   // count + 1 entries; a node's children end where the next node's start
    MappedColumn<NodeID> m_orderedChildren;
    std::unordered_map<std::int32_t, std::int32_t> m_firstIssueByNode;
    std::unordered_map<std::int32_t, std::int32_t> m_hardLinkCarriers;
};

}
