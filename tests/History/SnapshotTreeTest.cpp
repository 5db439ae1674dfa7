#include "History/SnapshotTree.hpp"

#include "Classification/ContentMap.hpp"
#include "Classification/ModeBucketMaps.hpp"
#include "Geometry/SunburstLayout.hpp"
#include "History/SnapshotFixture.hpp"
#include "Scanning/ScanTree.hpp"

#include <gtest/gtest.h>

#include <map>
#include <set>

using namespace tarnwick;
using namespace tarnwick::testing;

namespace {

using Item = TreeFixture::Item;

// Folders kept and not kept, files of several types and dates, a hidden folder and a folder
// that could not be read in full.
std::shared_ptr<const ScanTree> sampleTree()
{
    TreeFixture tree;
    addSampleProjects(tree);
    tree.add(Item { "Projects/small/big.bin", 9'999'999, NodeKind::file, std::nullopt, daysAgo(800), daysAgo(800) });
    tree.add(Item { ".cache/blob", 15'000'000, NodeKind::file, std::nullopt, daysAgo(10), daysAgo(10) });
    NodeID locked = tree.add("Locked/");
    tree.add(Item { "Locked/seen.mov", 11'000'000, NodeKind::file, std::nullopt, daysAgo(1), daysAgo(1) });
    tree.builder().markContentsUnready(locked);
    tree.add(Item { "movie.mkv", 50'000'000, NodeKind::file, std::nullopt, daysAgo(100), daysAgo(100) });
    return tree.finish(TreeBuilder::Metadata::included, "/home/ann");
}

}

TEST(SnapshotTree, NodesKeepTheSnapshotsPathsSizesAndReadingState)
{
    Snapshot snapshot = reduceWithColors(sampleTree());
    auto tree = SnapshotTree::make(snapshot);
    ASSERT_EQ(tree->count(), snapshot.nodeCount());
    EXPECT_EQ(tree->rootPath(), "/home/ann");
    for (std::int32_t i = 0; i < snapshot.nodeCount(); ++i) {
        NodeID node { i };
        EXPECT_EQ(tree->path(node), snapshot.path(i));
        EXPECT_EQ(tree->allocatedSize(node), snapshot.size(i)) << snapshot.path(i);
        EXPECT_EQ(tree->logicalSize(node), snapshot.logical[static_cast<std::size_t>(i)]) << snapshot.path(i);
        EXPECT_EQ(tree->isIncomplete(node), snapshot.flags[static_cast<std::size_t>(i)].contains(NodeFlag::incomplete)) << snapshot.path(i);
    }
    EXPECT_TRUE(tree->isIncomplete(*tree->node("/home/ann/Locked")));
    EXPECT_TRUE(tree->isHiddenFromFinder(*tree->node("/home/ann/.cache")).value_or(false));
}

TEST(SnapshotTree, ColorTotalsOfKeptFoldersAreThoseOfTheScan)
{
    auto scan = sampleTree();
    Snapshot snapshot = reduceWithColors(scan);
    auto tree = SnapshotTree::make(snapshot, FixedTimeZone(fixtureZoneOffset));
    auto boundaries = DateGroup::Boundaries::make(fixtureNow(), FixedTimeZone(fixtureZoneOffset));

    auto scanContent = ContentMap::build(scan);
    auto treeContent = ContentMap::build(tree);
    auto scanModified = ModeBucketMaps::dates(scan, ModeBucketMaps::DateKind::modified, boundaries);
    auto treeModified = ModeBucketMaps::dates(tree, ModeBucketMaps::DateKind::modified, boundaries);
    auto scanCreated = ModeBucketMaps::dates(scan, ModeBucketMaps::DateKind::created, boundaries);
    auto treeCreated = ModeBucketMaps::dates(tree, ModeBucketMaps::DateKind::created, boundaries);
    auto scanHidden = ModeBucketMaps::hidden(scan);
    auto treeHidden = ModeBucketMaps::hidden(tree);
    for (std::string path : { "/home/ann", "/home/ann/Projects", "/home/ann/Projects/Build", "/home/ann/.cache" }) {
        NodeID inScan = *scan->node(path);
        NodeID inTree = *tree->node(path);
        EXPECT_EQ(treeContent->buckets().totals(inTree), scanContent->buckets().totals(inScan)) << path;
        EXPECT_EQ(treeModified->totals(inTree), scanModified->totals(inScan)) << path;
        EXPECT_EQ(treeCreated->totals(inTree), scanCreated->totals(inScan)) << path;
        EXPECT_EQ(treeHidden->totals(inTree), scanHidden->totals(inScan)) << path;
        EXPECT_EQ(treeContent->category(inTree), scanContent->category(inScan)) << path;
    }
    EXPECT_EQ(treeContent->category(*tree->node("/home/ann/Projects/Build")), ContentCategory::archives);
}

TEST(SnapshotTree, WithoutColorsSizesStayRoundedAndRestsHaveNoParts)
{
    Snapshot snapshot = reduceWithoutColors(sampleTree());
    auto tree = SnapshotTree::make(snapshot);
    NodeID projects = *tree->node("/home/ann/Projects");
    EXPECT_EQ(tree->allocatedSize(projects), 50'000'000); // 50,345,800 rounded down to 10 MB
    ASSERT_NE(tree->rests(), nullptr);
    EXPECT_TRUE(tree->rests()->empty());
}

// A saved day on the map: one sector for every kept folder, and for every folder the bytes its
// kept folders leave (its files and its folders under 10 MB) as one rest closing its turn.
TEST(SnapshotTree, ItsMapDrawsTheKeptFoldersAndEachFoldersRest)
{
    Snapshot snapshot = reduceWithColors(sampleTree());
    auto tree = SnapshotTree::make(snapshot);
    SunburstLayout layout = SunburstLayout::layout(*tree, NodeID::root(), 8, 1'000'000, std::nullopt, nullptr);

    std::set<std::string> drawn;
    std::map<std::string, std::int64_t> rests;
    for (const SunburstLayout::Ring& ring : layout.rings) {
        for (const SunburstSector& sector : ring) {
            if (std::optional<NodeID> node = sector.node())
                drawn.insert(tree->path(*node));
            else if (const auto* rest = std::get_if<SunburstSector::Rest>(&sector.content))
                rests[tree->path(rest->parent)] += sector.bytes;
            else
                ADD_FAILURE() << "a saved day has no other pieces";
        }
    }
    std::set<std::string> kept;
    std::map<std::string, std::int64_t> expectedRests;
    for (std::int32_t i = 0; i < snapshot.nodeCount(); ++i) {
        if (i > 0)
            kept.insert(snapshot.path(i));
        std::int64_t rest = snapshot.size(i);
        for (std::int32_t child = i + 1; child < snapshot.nodeCount(); ++child) {
            if (snapshot.parents[static_cast<std::size_t>(child)] == i)
                rest -= snapshot.size(child);
        }
        if (rest > 0)
            expectedRests[snapshot.path(i)] = rest;
    }
    EXPECT_EQ(drawn, kept);
    EXPECT_EQ(rests, expectedRests);
    ASSERT_FALSE(expectedRests.empty());
}
