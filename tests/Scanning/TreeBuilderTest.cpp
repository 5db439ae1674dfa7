#include "Scanning/ScanTree.hpp"
#include "Scanning/TreeBuilder.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <map>

using namespace tarnwick;

namespace {

constexpr std::int64_t maxSize = std::numeric_limits<std::int64_t>::max();
using Metadata = TreeBuilder::Metadata;

std::shared_ptr<const ScanTree> finish(TreeBuilder builder, Metadata metadata = Metadata::included)
{
    return std::move(builder).finalize("/scan/root", ScanCoverage::whole(), metadata);
}

NodeID addFile(TreeBuilder& builder, NodeID parent, std::string_view name, std::optional<std::int64_t> allocated,
    std::optional<std::int64_t> logical = 0, std::optional<Date> created = std::nullopt)
{
    return builder.addNode(parent, { name, NodeKind::file, allocated, logical, std::nullopt, std::nullopt, created, false });
}

NodeID addFolder(TreeBuilder& builder, NodeID parent, std::string_view name, bool hidden = false, std::optional<std::int64_t> ownBlocks = std::nullopt)
{
    return builder.addNode(parent, { name, NodeKind::directory, ownBlocks, 999, std::nullopt, std::nullopt, std::nullopt, hidden });
}

Date unixDate(std::int64_t seconds) { return Date(std::chrono::seconds(seconds)); }

}

TEST(ScanTree, RootOnlyTree)
{
    auto tree = finish(TreeBuilder("root", NodeKind::directory, std::nullopt));
    NodeID root = NodeID::root();
    EXPECT_EQ(tree->count(), 1);
    EXPECT_EQ(tree->relativePath(root), "");
    EXPECT_EQ(tree->path(root), "/scan/root");
    EXPECT_FALSE(tree->parent(root));
    EXPECT_EQ(tree->depth(root), 0);
    EXPECT_TRUE(tree->children(root).empty());
    EXPECT_EQ(tree->node("/scan/root"), root);
}

TEST(ScanTree, FoldersCountTheirOwnBlocksOnDiskButNoLogicalSize)
{
    TreeBuilder builder("root", NodeKind::directory, std::nullopt);
    NodeID a = addFolder(builder, NodeID::root(), "a", false, 4096);
    NodeID empty = addFolder(builder, a, "empty", false, 4096);
    NodeID unknown = addFolder(builder, NodeID::root(), "unknown");
    addFile(builder, a, "f", 4096, 100);
    addFile(builder, NodeID::root(), "g", 8192, 5000);
    auto tree = finish(std::move(builder));
    EXPECT_EQ(tree->allocatedSize(empty), 4096);
    EXPECT_EQ(tree->logicalSize(empty), 0);
    EXPECT_EQ(tree->allocatedSize(a), 3 * 4096);
    EXPECT_EQ(tree->logicalSize(a), 100);
    // A folder's blocks are the least of it: not knowing them makes no total a lower bound.
    EXPECT_EQ(tree->allocatedSize(unknown), 0);
    EXPECT_FALSE(tree->isIncomplete(unknown));
    EXPECT_EQ(tree->allocatedSize(NodeID::root()), 3 * 4096 + 8192);
    EXPECT_EQ(tree->logicalSize(NodeID::root()), 5100);
    EXPECT_FALSE(tree->isIncomplete(NodeID::root()));
}

TEST(ScanTree, AHardLinkedFileCountsOnceAtItsFirstPathInByteOrder)
{
    // Names are added in the order workers might deliver them, which must not matter.
    struct Case {
        const char* what;
        std::vector<std::string> links; // paths below the root, in the order they are added
        std::string carrier;
    };
    const std::vector<Case> cases {
        { "two names in one folder", { "a/z", "a/b" }, "a/b" },
        { "across folders, the earlier path wins", { "b/x", "a/y" }, "a/y" },
        { "four names in four folders", { "d/f", "c/f", "a-b/f", "a/f" }, "a-b/f" },
        { "byte order, not locale order: upper case first", { "a/f", "B/f" }, "B/f" },
        { "a separator sorts as a byte", { "ab/f", "a/bf" }, "a/bf" },
    };
    for (const Case& c : cases) {
        TreeBuilder builder("root", NodeKind::directory, std::nullopt);
        std::map<std::string, NodeID> folders;
        std::map<std::string, NodeID> names;
        for (const std::string& path : c.links) {
            std::string folder = path.substr(0, path.find('/'));
            auto [at, added] = folders.try_emplace(folder, NodeID::root());
            if (added)
                at->second = addFolder(builder, NodeID::root(), folder);
            NodeID node = addFile(builder, at->second, path.substr(path.find('/') + 1), 50'000'000, 49'000'000);
            builder.noteHardLink(node, 7, 1234);
            names.emplace(path, node);
        }
        NodeID unrelated = addFile(builder, NodeID::root(), "other", 100, 100);
        builder.noteHardLink(unrelated, 8, 1234); // the same inode number on another disk is another file
        auto tree = finish(std::move(builder));
        EXPECT_EQ(tree->allocatedSize(NodeID::root()), 50'000'000 + 100) << c.what;
        EXPECT_EQ(tree->logicalSize(NodeID::root()), 49'000'000 + 100) << c.what;
        for (const auto& [path, node] : names) {
            bool carries = path == c.carrier;
            EXPECT_EQ(tree->allocatedSize(node), carries ? 50'000'000 : 0) << c.what << ": " << path;
            EXPECT_EQ(tree->hardLinkCarrier(node), carries ? std::nullopt : std::optional(names.at(c.carrier))) << c.what << ": " << path;
        }
        EXPECT_FALSE(tree->hardLinkCarrier(unrelated)) << c.what;
    }
}

TEST(ScanTree, DisplayOrderIsSizeThenNameThenNumber)
{
    TreeBuilder builder("root", NodeKind::directory, std::nullopt);
    NodeID small = addFile(builder, NodeID::root(), "a-small", 10);
    NodeID secondB = addFile(builder, NodeID::root(), "b", 50);
    NodeID equalA = addFile(builder, NodeID::root(), "a", 50);
    NodeID firstB = addFile(builder, NodeID::root(), "b", 50);
    NodeID big = addFile(builder, NodeID::root(), "z", 70);
    auto tree = finish(std::move(builder));
    auto children = tree->children(NodeID::root());
    std::vector<NodeID> order(children.begin(), children.end());
    // Equal names keep node order: secondB was added before firstB.
    EXPECT_EQ(order, (std::vector<NodeID> { big, equalA, secondB, firstB, small }));
}

TEST(ScanTree, UnknownAndNegativeSizes)
{
    struct Case {
        const char* name;
        std::optional<std::int64_t> allocated;
        std::optional<std::int64_t> logical;
        bool ownAllocatedUnknown, ownLogicalUnknown, incomplete, logicalIncomplete;
    };
    const Case cases[] = {
        { "both known", 10, 10, false, false, false, false },
        { "allocated unknown", std::nullopt, 10, true, false, true, false },
        { "logical unknown", 10, std::nullopt, false, true, false, true },
        { "both unknown", std::nullopt, std::nullopt, true, true, true, true },
        { "negative stored as zero", -5, -5, false, false, false, false },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TreeBuilder builder("root", NodeKind::directory, std::nullopt);
        NodeID folder = addFolder(builder, NodeID::root(), "folder");
        NodeID file = addFile(builder, folder, "f", c.allocated, c.logical);
        auto tree = finish(std::move(builder));
        EXPECT_EQ(tree->flags(file).contains(NodeFlag::allocatedUnknown), c.ownAllocatedUnknown);
        EXPECT_EQ(tree->flags(file).contains(NodeFlag::logicalUnknown), c.ownLogicalUnknown);
        EXPECT_GE(tree->allocatedSize(file), 0);
        for (NodeID node : { file, folder, NodeID::root() }) {
            EXPECT_EQ(tree->isIncomplete(node), c.incomplete);
            EXPECT_EQ(tree->flags(node).contains(NodeFlag::logicalIncomplete), c.logicalIncomplete);
        }
    }
}

TEST(ScanTree, ContentsUnreadAndScanningMakeLowerBounds)
{
    TreeBuilder builder("root", NodeKind::directory, std::nullopt);
    NodeID unread = addFolder(builder, NodeID::root(), "unread");
    NodeID scanning = addFolder(builder, NodeID::root(), "scanning");
    builder.markContentsUnready(unread);
    builder.markScanning(scanning);
    auto tree = finish(std::move(builder));
    for (NodeID node : { unread, scanning, NodeID::root() }) {
        EXPECT_TRUE(tree->isIncomplete(node));
        EXPECT_TRUE(tree->flags(node).contains(NodeFlag::logicalIncomplete));
    }
}

TEST(ScanTree, SaturatingSums)
{
    TreeBuilder builder("root", NodeKind::directory, std::nullopt);
    NodeID folder = addFolder(builder, NodeID::root(), "folder");
    addFile(builder, folder, "a", maxSize - 10, 1);
    addFile(builder, folder, "b", 20, 1);
    NodeID lone = addFolder(builder, NodeID::root(), "lone");
    addFile(builder, lone, "huge", maxSize, 0);
    auto tree = finish(std::move(builder));
    // The flag itself is not inherited: a lone clamped child adds up without overflowing.
    EXPECT_EQ(tree->allocatedSize(lone), maxSize);
    EXPECT_FALSE(tree->flags(lone).contains(NodeFlag::overflow));
    for (NodeID node : { folder, NodeID::root() }) {
        EXPECT_EQ(tree->allocatedSize(node), maxSize);
        EXPECT_TRUE(tree->isIncomplete(node));
        EXPECT_FALSE(tree->flags(node).contains(NodeFlag::logicalIncomplete));
    }
    EXPECT_EQ(tree->logicalSize(folder), 2);
    EXPECT_TRUE(tree->flags(folder).contains(NodeFlag::overflow));
    // The clamped total overflows again where it meets another size on its way up.
    EXPECT_TRUE(tree->flags(NodeID::root()).contains(NodeFlag::overflow));
}

TEST(ScanTree, SizesWithoutNodes)
{
    TreeBuilder builder("root", NodeKind::directory, std::nullopt);
    NodeID folder = addFolder(builder, NodeID::root(), "folder");
    builder.addSizesWithoutNodes(folder, 100, 50, false);
    builder.addSizesWithoutNodes(folder, maxSize, 0, false);
    NodeID other = addFolder(builder, NodeID::root(), "other");
    builder.addSizesWithoutNodes(other, 1, 1, true);
    auto tree = finish(std::move(builder));
    EXPECT_EQ(tree->allocatedSize(folder), maxSize);
    EXPECT_TRUE(tree->flags(folder).contains(NodeFlag::overflow));
    EXPECT_TRUE(tree->isIncomplete(folder));
    EXPECT_FALSE(tree->flags(folder).contains(NodeFlag::logicalIncomplete));
    EXPECT_TRUE(tree->isIncomplete(other));
    EXPECT_TRUE(tree->flags(other).contains(NodeFlag::logicalIncomplete));
    EXPECT_FALSE(tree->flags(other).contains(NodeFlag::overflow));
}

TEST(ScanTree, DateEncodingRange)
{
    struct Case {
        std::int64_t unixSeconds;
        bool kept;
    };
    const Case cases[] = {
        { 978307200, true },                  // 2001-01-01
        { 978307200 + 2147483647LL, true },    // 2069-01-19 03:14:07
        { 978307200 + 2147483648LL, false },   // one second later
        { 978307200 - 2147483647LL, true },    // 1932-12-13 20:45:53
        { 978307200 - 2147483648LL, false },   // the sentinel itself
        { 0, true },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.unixSeconds);
        std::int32_t stored = TreeDate::encode(unixDate(c.unixSeconds));
        EXPECT_EQ(stored != TreeDate::noDate, c.kept);
        if (c.kept)
            EXPECT_EQ(TreeDate::decode(stored), unixDate(c.unixSeconds));
    }
    EXPECT_EQ(TreeDate::encode(Date(std::chrono::milliseconds(978307200500))), 0); // floored
    EXPECT_EQ(TreeDate::encode(Date(std::chrono::milliseconds(978307199500))), -1);
    EXPECT_EQ(TreeDate::encodeUnixSeconds(std::optional<double>(std::numeric_limits<double>::infinity())), TreeDate::noDate);
}

TEST(ScanTree, LastChangeAndOldestItemRollUp)
{
    TreeBuilder builder("root", NodeKind::directory, std::nullopt);
    NodeID a = addFolder(builder, NodeID::root(), "a");
    builder.setMetadata(a, unixDate(1'000'000'000), unixDate(1'100'000'000), false);
    builder.addNode(a, { "f", NodeKind::file, 1, 1, std::nullopt, unixDate(1'500'000'000), unixDate(1'200'000'000), false });
    NodeID empty = addFolder(builder, NodeID::root(), "empty");
    builder.setMetadata(empty, std::nullopt, unixDate(1'300'000'000), false);
    NodeID counted = addFolder(builder, NodeID::root(), "counted");
    builder.setMetadata(counted, std::nullopt, unixDate(1'400'000'000), false);
    builder.noteCreationWithoutNode(counted, unixDate(1'050'000'000));
    builder.noteCreationWithoutNode(counted, unixDate(1'060'000'000));
    NodeID undatedFile = addFolder(builder, NodeID::root(), "undated");
    builder.setMetadata(undatedFile, std::nullopt, unixDate(1'000'000'001), false);
    addFile(builder, undatedFile, "nodate", 1, 1, std::nullopt);
    auto tree = finish(std::move(builder));
    EXPECT_EQ(tree->lastChangeInside(a), unixDate(1'500'000'000));
    EXPECT_EQ(tree->lastChangeInside(NodeID::root()), unixDate(1'500'000'000));
    EXPECT_EQ(tree->oldestItem(a), unixDate(1'200'000'000));
    // A folder with nothing dated inside takes its own creation date.
    EXPECT_EQ(tree->oldestItem(empty), unixDate(1'300'000'000));
    EXPECT_EQ(tree->oldestItem(counted), unixDate(1'050'000'000));
    // A file without a creation date still counts as dated, so the folder keeps no date.
    EXPECT_FALSE(tree->oldestItem(undatedFile));
    EXPECT_EQ(tree->oldestItem(NodeID::root()), unixDate(1'050'000'000));
}

TEST(ScanTree, HiddenFromFinderInheritance)
{
    TreeBuilder builder(".root", NodeKind::directory, std::nullopt);
    NodeID dotted = addFile(builder, NodeID::root(), ".profile", 1);
    NodeID plain = addFolder(builder, NodeID::root(), "plain");
    NodeID hiddenFolder = addFolder(builder, NodeID::root(), "marked", true);
    NodeID inside = addFile(builder, hiddenFolder, "normal", 1);
    NodeID dotFolder = addFolder(builder, plain, ".cache");
    NodeID deep = addFile(builder, dotFolder, "deep", 1);
    TreeBuilder copy = builder;
    auto tree = finish(std::move(builder));
    EXPECT_EQ(tree->isHiddenFromFinder(NodeID::root()), false);
    EXPECT_EQ(tree->isHiddenFromFinder(dotted), true);
    EXPECT_EQ(tree->isHiddenFromFinder(plain), false);
    EXPECT_EQ(tree->isHiddenFromFinder(hiddenFolder), true);
    EXPECT_TRUE(tree->hasOwnHiddenAttribute(hiddenFolder));
    EXPECT_EQ(tree->isHiddenFromFinder(inside), true);
    EXPECT_FALSE(tree->hasOwnHiddenAttribute(inside));
    EXPECT_EQ(tree->isHiddenFromFinder(deep), true);
    EXPECT_FALSE(tree->isHiddenFromFinder(NodeID { 99 }));
    auto withoutMetadata = finish(std::move(copy), Metadata::excluded);
    EXPECT_FALSE(withoutMetadata->isHiddenFromFinder(dotted));
}

TEST(ScanTree, IssuesAndAncestry)
{
    TreeBuilder builder("root", NodeKind::directory, std::nullopt);
    NodeID a = addFolder(builder, NodeID::root(), "a");
    NodeID b = addFolder(builder, a, "b");
    NodeID c = addFile(builder, b, "c", 1);
    NodeID other = addFolder(builder, NodeID::root(), "other");
    builder.recordIssue(b, IssueKind::permissionDenied, 13, "Permission denied");
    builder.recordIssue(b, IssueKind::other, 5, "second");
    auto tree = finish(std::move(builder));
    ASSERT_NE(tree->issue(b), nullptr);
    EXPECT_EQ(tree->issue(b)->message, "Permission denied");
    EXPECT_TRUE(tree->flags(b).contains(NodeFlag::hasIssue));
    EXPECT_EQ(tree->issue(a), nullptr);
    EXPECT_EQ(tree->issues().size(), 2u);
    EXPECT_TRUE(tree->isAncestor(a, c));
    EXPECT_TRUE(tree->isAncestor(NodeID::root(), c));
    EXPECT_FALSE(tree->isAncestor(c, c));
    EXPECT_FALSE(tree->isAncestor(other, c));
    EXPECT_EQ(tree->topmostAncestor(c, NodeID::root()), a);
    EXPECT_EQ(tree->topmostAncestor(c, a), b);
    EXPECT_FALSE(tree->topmostAncestor(c, other));
    EXPECT_EQ(tree->depth(c), 3);
    EXPECT_EQ(tree->relativePath(c), "a/b/c");
    EXPECT_EQ(tree->path(c), "/scan/root/a/b/c");
    EXPECT_EQ(tree->chain(c), (std::vector<NodeID> { NodeID::root(), a, b, c }));
}

TEST(ScanTree, NodeAtPathToleratesNormalisation)
{
    TreeBuilder builder("root", NodeKind::directory, std::nullopt);
    NodeID decomposed = addFolder(builder, NodeID::root(), "Cafe\xCC\x81");  // e + combining acute
    NodeID file = addFile(builder, decomposed, "menu.txt", 1);
    auto tree = finish(std::move(builder));
    EXPECT_EQ(tree->node("/scan/root/Caf\xC3\xA9/menu.txt"), file);  // precomposed é
    EXPECT_EQ(tree->node("/scan/root/Cafe\xCC\x81"), decomposed);
    EXPECT_EQ(tree->node("Cafe\xCC\x81/menu.txt"), file);
    EXPECT_FALSE(tree->node("/scan/root/missing"));
    EXPECT_FALSE(tree->node("/scan/rootother/x"));
    EXPECT_FALSE(tree->node("/elsewhere"));
}
