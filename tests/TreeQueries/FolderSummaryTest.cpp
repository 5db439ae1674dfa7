#include "TreeQueries/FolderSummary.hpp"

#include "Scanning/ScanTree.hpp"
#include "Scanning/TreeBuilder.hpp"

#include <gtest/gtest.h>

#include <limits>

using namespace tarnwick;

namespace {

TreeBuilder::Entry file(std::string_view name, std::optional<std::int64_t> size)
{
    return TreeBuilder::Entry { .name = name, .kind = NodeKind::file, .allocatedSize = size, .logicalSize = size };
}

std::vector<std::string> names(const FolderSummary& summary)
{
    std::vector<std::string> result;
    for (const auto& entry : summary.entries)
        result.push_back(entry.name);
    return result;
}

}

TEST(FolderSummary, EntriesInDisplayOrderWithSharesAndTheRest)
{
    TreeBuilder b("r", NodeKind::directory, std::nullopt);
    b.addNode(NodeID::root(), file("small", 100));
    b.addNode(NodeID::root(), file("beta", 300));
    b.addNode(NodeID::root(), file("alpha", 300));
    NodeID sub = b.addNode(NodeID::root(), TreeBuilder::Entry { .name = "sub", .kind = NodeKind::directory });
    NodeID locked = b.addNode(sub, file("locked", 200));
    b.recordIssue(locked, IssueKind::permissionDenied, 13, "Permission denied");
    b.addSizesWithoutNodes(NodeID::root(), 100, 50, false);
    auto tree = std::move(b).finalize("/r", ScanCoverage::whole(), TreeBuilder::Metadata::included);

    struct Case {
        int limit;
        std::vector<std::string> names;
        std::int32_t otherCount;
        std::int64_t otherAllocated;
    };
    const Case cases[] {
        { 2, { "alpha", "beta" }, 2, 300 },
        { 0, {}, 4, 900 },
        { -3, {}, 4, 900 },
        { 4, { "alpha", "beta", "sub", "small" }, 0, 0 },
        { 99, { "alpha", "beta", "sub", "small" }, 0, 0 },
    };
    for (const Case& c : cases) {
        FolderSummary summary = FolderSummary::make(*tree, NodeID::root(), c.limit);
        EXPECT_EQ(names(summary), c.names) << c.limit;
        EXPECT_EQ(summary.childCount, 4);
        EXPECT_EQ(summary.otherCount, c.otherCount) << c.limit;
        EXPECT_EQ(summary.otherAllocated, c.otherAllocated) << c.limit;
    }

    FolderSummary all = FolderSummary::make(*tree, NodeID::root(), 10);
    EXPECT_EQ(all.allocated, 1000);
    EXPECT_EQ(all.logical, 950);
    EXPECT_FALSE(all.incomplete);
    EXPECT_DOUBLE_EQ(all.entries[0].share, 0.3);
    EXPECT_DOUBLE_EQ(all.entries[3].share, 0.1); // shares need not add up to 1: 100 bytes have no node
    EXPECT_EQ(all.entries[2].kind, NodeKind::directory);
    EXPECT_FALSE(all.entries[2].hasIssue); // the issue is inside, not on the folder

    FolderSummary inSub = FolderSummary::make(*tree, sub, 10);
    EXPECT_TRUE(inSub.entries[0].hasIssue);
    EXPECT_DOUBLE_EQ(inSub.entries[0].share, 1.0);
}

TEST(FolderSummary, FileEmptyFolderAndUnknownSizes)
{
    TreeBuilder b("r", NodeKind::directory, std::nullopt);
    NodeID leaf = b.addNode(NodeID::root(), file("leaf", 10));
    NodeID empty = b.addNode(NodeID::root(), TreeBuilder::Entry { .name = "empty", .kind = NodeKind::directory });
    b.addNode(empty, file("z1", 0));
    b.addNode(empty, file("z0", 0));
    NodeID partly = b.addNode(NodeID::root(), TreeBuilder::Entry { .name = "partly", .kind = NodeKind::directory });
    b.addNode(partly, file("known", 5));
    b.addNode(partly, file("unknown", std::nullopt));
    auto tree = std::move(b).finalize("/r", ScanCoverage::whole(), TreeBuilder::Metadata::included);

    FolderSummary ofFile = FolderSummary::make(*tree, leaf, 5);
    EXPECT_EQ(ofFile.childCount, 0);
    EXPECT_TRUE(ofFile.entries.empty());
    EXPECT_EQ(ofFile.otherCount, 0);
    EXPECT_EQ(ofFile.otherAllocated, 0);
    EXPECT_EQ(ofFile.allocated, 10);

    FolderSummary ofEmpty = FolderSummary::make(*tree, empty, 5);
    EXPECT_EQ(names(ofEmpty), (std::vector<std::string> { "z0", "z1" }));
    for (const auto& entry : ofEmpty.entries)
        EXPECT_EQ(entry.share, 0.0);

    FolderSummary ofPartly = FolderSummary::make(*tree, partly, 5);
    EXPECT_TRUE(ofPartly.incomplete);
    ASSERT_EQ(ofPartly.entries.size(), 2u);
    EXPECT_FALSE(ofPartly.entries[0].incomplete);
    EXPECT_TRUE(ofPartly.entries[1].incomplete);
    EXPECT_EQ(ofPartly.entries[1].allocated, 0);
}

TEST(FolderSummary, RestSaturatesAtTheLargestSize)
{
    constexpr std::int64_t huge = std::numeric_limits<std::int64_t>::max() / 2 + 1;
    TreeBuilder b("r", NodeKind::directory, std::nullopt);
    b.addNode(NodeID::root(), file("first", huge));
    b.addNode(NodeID::root(), file("second", huge));
    b.addNode(NodeID::root(), file("third", huge));
    auto tree = std::move(b).finalize("/r", ScanCoverage::whole(), TreeBuilder::Metadata::included);

    FolderSummary summary = FolderSummary::make(*tree, NodeID::root(), 1);
    EXPECT_EQ(summary.otherCount, 2);
    EXPECT_EQ(summary.otherAllocated, std::numeric_limits<std::int64_t>::max());
    EXPECT_TRUE(summary.incomplete); // the folder's own total saturated too
}
