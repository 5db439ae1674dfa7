#include "Scanning/NodeStatus.hpp"

#include "Scanning/ScanTree.hpp"
#include "Scanning/TreeBuilder.hpp"

#include <gtest/gtest.h>

#include <limits>

using namespace tarnwick;

namespace {

TreeBuilder::Entry entry(std::string_view name, NodeKind kind, std::optional<std::int64_t> size = 0)
{
    return TreeBuilder::Entry { .name = name, .kind = kind, .allocatedSize = size, .logicalSize = size };
}

using Texts = std::vector<std::string_view>;

constexpr std::string_view insideText = "Some items inside couldn't be measured, so this total is a lower bound.";
constexpr std::string_view unreadText = "The contents of this folder weren't scanned, so its size is a lower bound.";
constexpr std::string_view overflowText = "The total is too large to represent exactly.";
constexpr std::string_view unknownText = "The file system didn't report an allocated size for this item, so it isn't counted.";
constexpr std::string_view scanningText = "This folder is still being scanned, so its size is a lower bound for now.";

}

TEST(NodeStatus, WordsInOrderOfPrecedence)
{
    TreeBuilder b("r", NodeKind::directory, std::nullopt);
    NodeID root = NodeID::root();
    NodeID denied = b.addNode(root, entry("denied", NodeKind::directory));
    b.recordIssue(denied, IssueKind::permissionDenied, 13, "Permission denied");
    b.markContentsUnready(denied);
    NodeID brokenLink = b.addNode(root, entry("brokenLink", NodeKind::symlink, std::nullopt));
    b.recordIssue(brokenLink, IssueKind::metadataUnavailable, 75, "Value too large");
    NodeID mount = b.addNode(root, entry("mnt", NodeKind::mountPoint));
    NodeID listing = b.addNode(root, entry("listing", NodeKind::directory));
    b.markScanning(listing);
    b.markContentsUnready(listing);
    NodeID unknown = b.addNode(root, entry("unknown", NodeKind::file, std::nullopt));
    NodeID unread = b.addNode(root, entry("unread", NodeKind::directory));
    b.markContentsUnready(unread);
    NodeID package = b.addNode(root, entry("App.app", NodeKind::package));
    NodeID link = b.addNode(root, entry("link", NodeKind::symlink, 4));
    NodeID alias = b.addNode(root, entry("alias", NodeKind::alias, 4));
    NodeID plain = b.addNode(root, entry("plain", NodeKind::file, 4));
    NodeID other = b.addNode(root, entry("fifo", NodeKind::other, 0));
    auto tree = std::move(b).finalize("/r", ScanCoverage::whole(), TreeBuilder::Metadata::included);

    const std::pair<NodeID, std::optional<std::string_view>> cases[] {
        { denied, "Access denied" }, { brokenLink, "Metadata unavailable" }, { mount, "Other volume, not scanned" },
        { listing, "Scanning…" }, { unknown, "Size unknown" }, { unread, "Not scanned" }, { package, "Package" },
        { link, "Link, not followed" }, { alias, "Alias, not followed" }, { plain, std::nullopt }, { other, std::nullopt },
        { root, std::nullopt },
    };
    for (auto [node, expected] : cases)
        EXPECT_EQ(NodeStatus::word(*tree, node), expected) << tree->name(node);
}

TEST(NodeStatus, PartlyReadComesAfterAnIssue)
{
    TreeBuilder b("r", NodeKind::directory, std::nullopt);
    NodeID granted = b.addNode(NodeID::root(), entry("granted", NodeKind::directory));
    NodeID inside = b.addNode(granted, entry("inside", NodeKind::directory));
    NodeID refused = b.addNode(NodeID::root(), entry("refused", NodeKind::directory));
    NodeID deeper = b.addNode(refused, entry("deeper", NodeKind::directory));
    b.recordIssue(refused, IssueKind::permissionDenied, 1, "Operation not permitted");
    auto tree = std::move(b).finalize("/r", ScanCoverage { { "/r/granted/inside", "/r/refused/deeper" } },
        TreeBuilder::Metadata::included);

    EXPECT_EQ(NodeStatus::word(*tree, NodeID::root()), "Partly read");
    EXPECT_EQ(NodeStatus::word(*tree, granted), "Partly read");
    EXPECT_EQ(NodeStatus::word(*tree, inside), std::nullopt);
    EXPECT_EQ(NodeStatus::word(*tree, refused), "Access denied");
    EXPECT_EQ(NodeStatus::word(*tree, deeper), std::nullopt);
}

TEST(NodeStatus, ExplanationsNameEachCause)
{
    constexpr std::int64_t huge = std::numeric_limits<std::int64_t>::max();
    TreeBuilder b("r", NodeKind::directory, std::nullopt);
    NodeID root = NodeID::root();
    NodeID holder = b.addNode(root, entry("holder", NodeKind::directory));
    NodeID unknown = b.addNode(holder, entry("unknown", NodeKind::file, std::nullopt));
    NodeID unread = b.addNode(root, entry("unread", NodeKind::directory));
    b.markContentsUnready(unread);
    NodeID big = b.addNode(root, entry("big", NodeKind::directory));
    b.addNode(big, entry("a", NodeKind::file, huge));
    b.addNode(big, entry("b", NodeKind::file, huge));
    NodeID rest = b.addNode(root, entry("rest", NodeKind::directory));
    b.addSizesWithoutNodes(rest, 100, 100, true);
    NodeID listing = b.addNode(root, entry("listing", NodeKind::directory));
    b.markScanning(listing);
    NodeID alias = b.addNode(root, entry("alias", NodeKind::alias, 1));
    NodeID link = b.addNode(root, entry("link", NodeKind::symlink, 1));
    NodeID mount = b.addNode(root, entry("mnt", NodeKind::mountPoint));
    NodeID plain = b.addNode(root, entry("plain", NodeKind::file, 1));
    auto tree = std::move(b).finalize("/r", ScanCoverage::whole(), TreeBuilder::Metadata::included);

    const std::pair<NodeID, Texts> cases[] {
        { holder, { insideText } },
        { unknown, { unknownText } },
        { unread, { unreadText } },
        { big, { overflowText } },
        { rest, { insideText } },
        { listing, { scanningText } },
        { alias, { "Finder alias. Its target isn't followed or counted." } },
        { link, { "Symbolic link. Its target isn't followed or counted." } },
        { mount, { "Another volume is mounted here. It isn't part of this scan; scan it as a separate source." } },
        { plain, {} },
        { root, { insideText, overflowText } },
    };
    for (const auto& [node, expected] : cases)
        EXPECT_EQ(NodeStatus::explanations(*tree, node), expected) << tree->name(node);
}
