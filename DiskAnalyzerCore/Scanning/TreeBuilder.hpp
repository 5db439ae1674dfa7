#pragma once

#include "Scanning/NodeFlags.hpp"
#include "Scanning/NodeID.hpp"
#include "Scanning/NodeKind.hpp"
#include "Scanning/ScanCoverage.hpp"
#include "Scanning/ScanIssue.hpp"
#include "Scanning/TreeDate.hpp"
#include "Support/MappedColumn.hpp"
#include "Support/NameArena.hpp"
#include "Support/SaturatingMath.hpp"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tarnwick {

class ScanTree;
struct RestBuckets;

// The single writer of a scan tree. One thread owns it while a scan runs; finalize
// rolls the sizes up and turns it into an immutable ScanTree.
class TreeBuilder {
public:
    struct Entry {
        std::string_view name;
        NodeKind kind = NodeKind::file;
        std::optional<std::int64_t> allocatedSize;
        std::optional<std::int64_t> logicalSize;
        std::optional<std::uint64_t> fileID;
        std::optional<Date> modified;
        std::optional<Date> created;
        bool hidden = false;
    };

    TreeBuilder(std::string_view rootName, NodeKind kind, std::optional<std::uint64_t> fileID, std::size_t reservingCapacity = 0);

    // Appends a node below an existing one and returns its number (the previous count).
    NodeID addNode(NodeID parent, const Entry& entry);
    // Same, with dates already in the stored form (seconds since 2001, or TreeDate::noDate).
    NodeID addNode(NodeID parent, std::string_view name, NodeKind kind, std::optional<std::int64_t> allocatedSize,
        std::optional<std::int64_t> logicalSize, std::uint64_t fileID, std::int32_t modified, std::int32_t created, bool hidden);

    // The creation date of an item counted into a folder without a node of its own.
    void noteCreationWithoutNode(NodeID folder, std::optional<Date> created);
    void setMetadata(NodeID node, std::optional<Date> modified, std::optional<Date> created, bool hidden);
    // Sizes of items that get no node; both additions saturate.
    void addSizesWithoutNodes(NodeID folder, std::int64_t allocated, std::int64_t logical, bool includesUnknown);
    void recordIssue(NodeID node, IssueKind kind, int code, std::string message);
    // A file with more than one name. Finalize counts each file once, at the name whose path
    // comes first in byte order; its other names in this tree keep their nodes at 0 bytes.
    void noteHardLink(NodeID node, std::uint64_t device, std::uint64_t fileID);
    void markContentsUnready(NodeID folder) { m_flags[folder.index()] |= static_cast<std::uint8_t>(NodeFlag::contentsUnread); }
    void markScanning(NodeID folder) { m_flags[folder.index()] |= static_cast<std::uint8_t>(NodeFlag::scanning); }

    [[nodiscard]] std::string_view name(NodeID node) const { return m_names[node.index()]; }
    [[nodiscard]] NodeKind kind(NodeID node) const { return m_kinds[node.index()]; }
    [[nodiscard]] NodeFlags flags(NodeID node) const { return NodeFlags(m_flags[node.index()]); }
    [[nodiscard]] std::optional<NodeID> parent(NodeID node) const;
    [[nodiscard]] std::int64_t ownAllocated(NodeID node) const { return m_allocated[node.index()]; }
    [[nodiscard]] std::int64_t ownLogical(NodeID node) const { return m_logical[node.index()]; }
    [[nodiscard]] std::int32_t createdSeconds(NodeID node) const { return m_created[node.index()]; }
    [[nodiscard]] std::int32_t modifiedSeconds(NodeID node) const { return m_modified[node.index()]; }
    [[nodiscard]] bool ownHidden(NodeID node) const { return m_hidden[node.index()] != 0; }
    [[nodiscard]] std::uint64_t fileID(NodeID node) const { return m_fileIDs[node.index()]; }
    [[nodiscard]] std::optional<std::int32_t> oldestWithoutNodes(NodeID folder) const;
    [[nodiscard]] const std::vector<ScanIssue>& issues() const { return m_issues; }
    [[nodiscard]] std::int32_t count() const { return static_cast<std::int32_t>(m_kinds.size()); }
    // Bytes held by the columns, for memory figures.
    [[nodiscard]] std::size_t byteCount() const;

    enum class Metadata { excluded, included };
    // Consumes the builder.
    [[nodiscard]] std::shared_ptr<const ScanTree> finalize(std::string rootPath, ScanCoverage coverage, Metadata metadata,
        std::shared_ptr<const RestBuckets> rests = nullptr) &&;

private:
    friend class ScanTree;

    NameArena m_names;
    MappedColumn<std::int32_t> m_parents;
    MappedColumn<NodeKind> m_kinds;
    MappedColumn<std::uint8_t> m_flags;
    MappedColumn<std::int64_t> m_allocated;
    MappedColumn<std::int64_t> m_logical;
    MappedColumn<std::uint64_t> m_fileIDs;
    MappedColumn<std::int32_t> m_modified;
    MappedColumn<std::int32_t> m_created;
    MappedColumn<std::uint8_t> m_hidden;
    std::unordered_map<std::int32_t, std::int32_t> m_oldestWithoutNodes;
    std::vector<ScanIssue> m_issues;
    struct HardLink {
        std::uint64_t device;
        std::uint64_t fileID;
        std::int32_t node;
    };
    std::vector<HardLink> m_hardLinks;

    // Zeroes the sizes of every name of a file but the one that carries it, and returns each
    // such name's carrier.
    std::unordered_map<std::int32_t, std::int32_t> settleHardLinks();
    [[nodiscard]] std::string pathFromRoot(std::int32_t node) const;
};


}
