#include "Scanning/NodeStatus.hpp"

#include "Scanning/ScanTree.hpp"

#include <algorithm>

namespace tarnwick::NodeStatus {

namespace {

namespace Words {
constexpr std::string_view partlyRead = "Partly read";
constexpr std::string_view otherVolume = "Other volume, not scanned";
constexpr std::string_view scanning = "Scanning…";
constexpr std::string_view sizeUnknown = "Size unknown";
constexpr std::string_view notScanned = "Not scanned";
constexpr std::string_view package = "Package";
constexpr std::string_view symlink = "Link, not followed";
constexpr std::string_view alias = "Alias, not followed";
}

namespace Explanations {
constexpr std::string_view incompleteInside = "Some items inside couldn't be measured, so this total is a lower bound.";
constexpr std::string_view contentsUnread = "The contents of this folder weren't scanned, so its size is a lower bound.";
constexpr std::string_view overflow = "The total is too large to represent exactly.";
constexpr std::string_view allocatedUnknown = "The file system didn't report an allocated size for this item, so it isn't counted.";
constexpr std::string_view scanning = "This folder is still being scanned, so its size is a lower bound for now.";
constexpr std::string_view alias = "Finder alias. Its target isn't followed or counted.";
constexpr std::string_view symlink = "Symbolic link. Its target isn't followed or counted.";
constexpr std::string_view mountPoint = "Another volume is mounted here. It isn't part of this scan; scan it as a separate source.";
}

// A node's total can be a lower bound for reasons of its own (unread contents, an unknown
// own size, a listing in progress, a saturated sum) or because of what is inside it. Only the
// latter is explained as "inside": a child that is a lower bound, or, with no reason of its
// own, sizes counted without nodes that were partly unknown.
bool isIncompleteFromInside(const ScanTree& tree, NodeID node)
{
    NodeFlags flags = tree.flags(node);
    if (!flags.contains(NodeFlag::incomplete))
        return false;
    ScanTree::Children children = tree.children(node);
    if (std::ranges::any_of(children, [&](NodeID child) { return tree.isIncomplete(child); }))
        return true;
    constexpr NodeFlag ownReasons[] { NodeFlag::contentsUnread, NodeFlag::allocatedUnknown, NodeFlag::scanning, NodeFlag::overflow };
    return std::ranges::none_of(ownReasons, [&](NodeFlag flag) { return flags.contains(flag); });
}

}

std::optional<std::string_view> word(const ScanTree& tree, NodeID node)
{
    if (const ScanIssue* issue = tree.issue(node))
        return IssueTexts::label(issue->kind);
    if (tree.isPartlyReadable(node))
        return Words::partlyRead;
    NodeKind kind = tree.kind(node);
    if (kind == NodeKind::mountPoint)
        return Words::otherVolume;
    NodeFlags flags = tree.flags(node);
    if (flags.contains(NodeFlag::scanning))
        return Words::scanning;
    if (flags.contains(NodeFlag::allocatedUnknown))
        return Words::sizeUnknown;
    if (flags.contains(NodeFlag::contentsUnread))
        return Words::notScanned;
    switch (kind) {
    case NodeKind::package:
        return Words::package;
    case NodeKind::symlink:
        return Words::symlink;
    case NodeKind::alias:
        return Words::alias;
    default:
        return std::nullopt;
    }
}

std::vector<std::string_view> explanations(const ScanTree& tree, NodeID node)
{
    NodeFlags flags = tree.flags(node);
    NodeKind kind = tree.kind(node);
    std::vector<std::string_view> texts;
    if (isIncompleteFromInside(tree, node))
        texts.push_back(Explanations::incompleteInside);
    if (flags.contains(NodeFlag::contentsUnread))
        texts.push_back(Explanations::contentsUnread);
    if (flags.contains(NodeFlag::overflow))
        texts.push_back(Explanations::overflow);
    if (flags.contains(NodeFlag::allocatedUnknown))
        texts.push_back(Explanations::allocatedUnknown);
    if (flags.contains(NodeFlag::scanning))
        texts.push_back(Explanations::scanning);
    if (kind == NodeKind::alias)
        texts.push_back(Explanations::alias);
    if (kind == NodeKind::symlink)
        texts.push_back(Explanations::symlink);
    if (kind == NodeKind::mountPoint)
        texts.push_back(Explanations::mountPoint);
    return texts;
}

}
