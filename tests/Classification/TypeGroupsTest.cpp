#include "Classification/TypeGroups.hpp"

#include "Classification/TreeFixture.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;
using namespace tarnwick::testing;

namespace {

using Item = TreeFixture::Item;

// /home/ann
//   Movies/          60 MB video
//   Work/            30 MB photos, and Work/Clips/ with 25 MB video: mostly photos
//   Mixed/           10 MB each of video, photos and caches: no group holds half
//   Caches/          12 MB (a cache folder), holding a hidden .state/ of 1 MB
//   pic.jpg          5 MB, directly inside
std::shared_ptr<const ScanTree> sampleTree()
{
    TreeFixture tree;
    tree.add("Movies/trip.mov", 40'000'000);
    tree.add("Movies/clip.mov", 20'000'000);
    tree.add("Work/board.jpg", 30'000'000);
    tree.add("Work/Clips/take.mov", 25'000'000);
    tree.add("Mixed/a.mov", 10'000'000);
    tree.add("Mixed/b.jpg", 10'000'000);
    tree.add("Mixed/Cache/blob", 10'000'000);
    tree.add("Caches/app/data", 11'000'000);
    tree.add("Caches/.state/x", 1'000'000);
    tree.add("pic.jpg", 5'000'000);
    return tree.finish(TreeBuilder::Metadata::included, "/home/ann");
}

const TypeGroups::Group* named(const std::vector<TypeGroups::Group>& groups, std::string_view key)
{
    for (const TypeGroups::Group& group : groups) {
        if (group.key == key)
            return &group;
    }
    return nullptr;
}

std::vector<std::pair<std::string, std::int64_t>> placesOf(const TypeGroups::Group* group)
{
    std::vector<std::pair<std::string, std::int64_t>> places;
    for (const TypeGroups::Place& place : group ? group->places : std::vector<TypeGroups::Place> {})
        places.emplace_back(place.path, place.bytes);
    return places;
}

using Places = std::vector<std::pair<std::string, std::int64_t>>;

}

TEST(TypeGroups, GroupsComeLargestFirstAndAddUpToThePlace)
{
    auto tree = sampleTree();
    TypeGroups::Maps maps;
    auto groups = TypeGroups::groups(tree, NodeID::root(), ColorMode::contentType, maps);
    ASSERT_TRUE(groups.has_value());
    ASSERT_GE(groups->size(), 3u);
    EXPECT_EQ((*groups)[0].key, "video");
    EXPECT_EQ((*groups)[0].bytes, 95'000'000);
    EXPECT_EQ((*groups)[1].key, "photos_and_design");
    EXPECT_EQ((*groups)[1].bytes, 45'000'000);
    std::int64_t sum = 0;
    for (const TypeGroups::Group& group : *groups)
        sum += group.bytes;
    EXPECT_EQ(sum, tree->allocatedSize(NodeID::root()));
}

TEST(TypeGroups, PlacesAreWhereTheMapShowsTheGroupAndMixedFoldersInside)
{
    auto tree = sampleTree();
    TypeGroups::Maps maps;
    auto groups = *TypeGroups::groups(tree, NodeID::root(), ColorMode::contentType, maps);
    // Work/Clips is video inside a folder of photos; Mixed holds some video without taking
    // the group.
    EXPECT_EQ(placesOf(named(groups, "video")),
        (Places { { "/home/ann/Movies", 60'000'000 }, { "/home/ann/Work/Clips", 25'000'000 }, { "/home/ann/Mixed", 10'000'000 } }));
    EXPECT_EQ(placesOf(named(groups, "photos_and_design")),
        (Places { { "/home/ann/Work", 30'000'000 }, { "/home/ann/Mixed", 10'000'000 }, { "/home/ann/pic.jpg", 5'000'000 } }));

    // Inside a place, only what lies below it counts.
    auto work = *TypeGroups::groups(tree, *tree->node("/home/ann/Work"), ColorMode::contentType, maps);
    EXPECT_EQ(placesOf(named(work, "video")), (Places { { "/home/ann/Work/Clips", 25'000'000 } }));
    EXPECT_EQ(placesOf(named(work, "photos_and_design")), (Places { { "/home/ann/Work/board.jpg", 30'000'000 } }));
}

TEST(TypeGroups, CachesAndHiddenSplitIntoTwoGroups)
{
    auto tree = sampleTree();
    TypeGroups::Maps maps;
    auto caches = *TypeGroups::groups(tree, NodeID::root(), ColorMode::caches, maps);
    ASSERT_EQ(caches.size(), 2u);
    EXPECT_EQ(named(caches, "caches")->bytes, 22'000'000);
    EXPECT_EQ(named(caches, "not_caches")->bytes, tree->allocatedSize(NodeID::root()) - 22'000'000);
    EXPECT_EQ(placesOf(named(caches, "caches")),
        (Places { { "/home/ann/Caches", 12'000'000 }, { "/home/ann/Mixed/Cache", 10'000'000 } }));

    auto hidden = *TypeGroups::groups(tree, NodeID::root(), ColorMode::hiddenFromFinder, maps);
    EXPECT_EQ(placesOf(named(hidden, "hidden")), (Places { { "/home/ann/Caches/.state", 1'000'000 } }));
    EXPECT_EQ(TypeGroups::groups(tree, NodeID::root(), ColorMode::onDiskVsSize, maps), std::nullopt);
}

TEST(TypeGroups, RatioExtremesSkipSmallItemsAndUnknownRatios)
{
    TreeFixture fixture;
    fixture.add(Item { "disk.img", 0, NodeKind::file, 40'000'000 });             // sparse: 0.00
    fixture.add(Item { "packed/data.bin", 12'000'000, NodeKind::file, 24'000'000 }); // 0.50
    fixture.add(Item { "plain.bin", 15'000'000, NodeKind::file, 15'000'000 });      // 1.00
    fixture.add(Item { "tiny.bin", 4'096, NodeKind::file, 10 });                     // too small to count
    fixture.add(Item { "unknown/x", 20'000'000, NodeKind::file, std::nullopt });
    auto tree = fixture.finish(TreeBuilder::Metadata::included, "/data");
    TypeGroups::Extremes extremes = TypeGroups::ratios(*tree, NodeID::root());
    ASSERT_GE(extremes.lowest.size(), 3u);
    EXPECT_EQ(extremes.lowest[0].path, "/data/disk.img");
    EXPECT_EQ(extremes.lowest[0].ratio, 0.0);
    EXPECT_EQ(extremes.highest[0].path, "/data/plain.bin");
    for (const TypeGroups::Ratio& ratio : extremes.highest)
        EXPECT_NE(ratio.path, "/data/tiny.bin");
    ASSERT_TRUE(extremes.place.ratio.has_value());
    EXPECT_DOUBLE_EQ(*extremes.place.ratio, static_cast<double>(tree->allocatedSize(NodeID::root())) / tree->logicalSize(NodeID::root()));
}
