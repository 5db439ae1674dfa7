#include "Classification/ColorMap.hpp"
#include "Classification/ContentMap.hpp"
#include "Classification/RestBuckets.hpp"

#include "Classification/TreeFixture.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;
using tarnwick::testing::TreeFixture;

namespace {

constexpr std::int64_t now = 1709294400; // 2024-03-01 12:00 UTC
constexpr std::int64_t day = 86400;

std::int32_t daysAgo(std::int64_t days) { return static_cast<std::int32_t>(now - days * day - TreeDate::referenceUnixSeconds); }

DateGroup::Boundaries boundaries() { return DateGroup::Boundaries::make(Date(std::chrono::seconds(now)), FixedTimeZone(0)); }

NodeColor contentGroup(ContentCategory category) { return NodeColor::group(ColorGroup::content(category)); }

}

TEST(ColorMap, ContentTypeTakesTheGroupOfHalfTheBytes)
{
    TreeFixture fixture;
    fixture.add("sixty/a.mp4", 60);
    fixture.add("sixty/b.jpg", 40);
    fixture.add("even/a.jpg", 50);
    fixture.add("even/b.mp4", 50);
    fixture.add("split/a.mp4", 40);
    fixture.add("split/b.jpg", 30);
    fixture.add("split/c.mp3", 30);
    fixture.add("empty/");
    fixture.add("Documents/notes", 10);
    auto tree = fixture.finish();
    auto map = ColorMap::make(ColorMode::contentType, tree, { .boundaries = boundaries() });
    ASSERT_TRUE(map->available());
    EXPECT_EQ(map->groups().size(), 13u);
    EXPECT_EQ(map->color(fixture.id("sixty")), contentGroup(ContentCategory::video));
    EXPECT_EQ(map->color(fixture.id("even")), contentGroup(ContentCategory::video));
    EXPECT_EQ(map->color(fixture.id("split")), NodeColor::mixed());
    EXPECT_EQ(map->color(fixture.id("empty")), NodeColor::mixed());
    EXPECT_EQ(map->color(fixture.id("split/c.mp3")), contentGroup(ContentCategory::music));
    EXPECT_EQ(map->color(fixture.id("Documents/notes")), contentGroup(ContentCategory::documents));
    EXPECT_EQ(map->color(NodeID { 10'000 }), NodeColor::unknown());

    // The same content map serves the caches mode.
    auto caches = ColorMap::make(ColorMode::caches, tree, { .content = map->content(), .boundaries = boundaries() });
    EXPECT_EQ(caches->content(), map->content());
}

TEST(ColorMap, ContentMapSharesAndRests)
{
    auto rests = std::make_shared<RestBuckets>();
    TreeFixture fixture;
    fixture.add("Movies/a.mp4", 300);
    fixture.add("Movies/b.txt", 100);
    NodeID kept = fixture.add("kept/");
    fixture.builder().addSizesWithoutNodes(kept, 400, 400, false);
    rests->add(kept, { RestMode::content, ContentCategories::raw(ContentCategory::music), 1 });
    rests->add(kept, { RestMode::modified, 0, 5 });
    rests->add(kept, { RestMode::content, ContentCategories::raw(ContentCategory::photos), 3 });
    auto tree = std::move(fixture.builder()).finalize("/scan", ScanCoverage::whole(), TreeBuilder::Metadata::included, rests);
    auto content = ContentMap::build(tree);
    ASSERT_NE(content, nullptr);
    EXPECT_EQ(content->shares(fixture.id("kept")),
        (std::vector<ContentShare> { { ContentCategory::photos, 300 }, { ContentCategory::music, 100 } }));
    EXPECT_EQ(content->category(fixture.id("kept")), ContentCategory::photos);
    ContentTotals root = content->totals(NodeID::root());
    EXPECT_EQ(root.bytes, 800);
    EXPECT_EQ(root[ContentCategory::video], 300);
    EXPECT_EQ(root[ContentCategory::documents], 100);
    const NodeID both[] = { NodeID::root(), fixture.id("Movies") };
    EXPECT_EQ(content->shares(both).size(), 4u);
}

TEST(ColorMap, DatesByBytesAndEmptyItemsByTheirOwnDate)
{
    TreeFixture fixture;
    fixture.add({ "recent/a", 20, NodeKind::file, std::nullopt, daysAgo(0), daysAgo(2) });
    fixture.add({ "recent/b", 10, NodeKind::file, std::nullopt, daysAgo(3), daysAgo(3) });
    fixture.add({ "recent/c", 5, NodeKind::file, std::nullopt, daysAgo(100), daysAgo(100) });
    fixture.add({ "mixed/a", 10, NodeKind::file, std::nullopt, daysAgo(10), daysAgo(10) });
    fixture.add({ "mixed/b", 10, NodeKind::file, std::nullopt, daysAgo(100), daysAgo(100) });
    fixture.add({ "mixed/c", 10, NodeKind::file, std::nullopt, daysAgo(1000), daysAgo(1000) });
    fixture.add({ "undated", 10, NodeKind::file });
    fixture.add({ "zero", 0, NodeKind::file, std::nullopt, daysAgo(20), daysAgo(20) });
    fixture.add({ "zeroUndated", 0, NodeKind::file });
    NodeID empty = fixture.add({ "empty/", 0, NodeKind::directory, std::nullopt, daysAgo(500), daysAgo(2) });
    auto tree = fixture.finish();

    auto modified = ColorMap::make(ColorMode::lastModified, tree, { .boundaries = boundaries() });
    auto created = ColorMap::make(ColorMode::created, tree, { .boundaries = boundaries() });
    auto date = [](DateGroup group) { return NodeColor::group(ColorGroup::date(group)); };
    EXPECT_EQ(modified->groups().size(), 6u);
    EXPECT_EQ(modified->color(fixture.id("recent/b")), date(DateGroup::past7Days));
    EXPECT_EQ(modified->color(fixture.id("recent")), date(DateGroup::today));
    EXPECT_EQ(created->color(fixture.id("recent")), date(DateGroup::past7Days));
    EXPECT_EQ(modified->color(fixture.id("mixed")), NodeColor::mixed());
    EXPECT_EQ(modified->color(fixture.id("undated")), NodeColor::group(ColorGroup::unknown()));
    EXPECT_EQ(modified->color(fixture.id("zero")), date(DateGroup::past30Days));
    EXPECT_EQ(modified->color(fixture.id("zeroUndated")), NodeColor::unknown());
    // An empty folder goes by its own date, not mixed.
    EXPECT_EQ(modified->color(empty), date(DateGroup::older));
    EXPECT_EQ(created->color(empty), date(DateGroup::past7Days));
}

TEST(ColorMap, HiddenShares)
{
    TreeFixture fixture;
    fixture.add({ "f/.secret", 30, NodeKind::file });
    fixture.add({ "f/shown", 90, NodeKind::file });
    fixture.add({ "f/flagged", 0, NodeKind::file, std::nullopt, TreeDate::noDate, TreeDate::noDate, true });
    fixture.add({ "f/plain", 0, NodeKind::file });
    fixture.add({ ".dotfolder/inside", 8, NodeKind::file });
    fixture.add("emptyFolder/");
    auto tree = fixture.finish();
    auto map = ColorMap::make(ColorMode::hiddenFromFinder, tree, { .boundaries = boundaries() });
    EXPECT_EQ(map->color(fixture.id("f")), NodeColor::share(0.25));
    EXPECT_EQ(map->color(fixture.id("f/.secret")), NodeColor::share(1.0));
    EXPECT_EQ(map->color(fixture.id("f/shown")), NodeColor::share(0.0));
    EXPECT_EQ(map->color(fixture.id("f/flagged")), NodeColor::share(1.0));
    EXPECT_EQ(map->color(fixture.id("f/plain")), NodeColor::share(0.0));
    EXPECT_EQ(map->color(fixture.id(".dotfolder/inside")), NodeColor::share(1.0)); // hidden by inheritance
    EXPECT_EQ(map->color(fixture.id("emptyFolder")), NodeColor::unknown());
}

TEST(ColorMap, CachesShares)
{
    TreeFixture fixture;
    fixture.add("app/Caches/blob", 25);
    fixture.add("app/data.db", 75);
    fixture.add("emptyFolder/");
    auto tree = fixture.finish();
    auto map = ColorMap::make(ColorMode::caches, tree, { .boundaries = boundaries() });
    EXPECT_EQ(map->color(fixture.id("app")), NodeColor::share(0.25));
    EXPECT_EQ(map->color(fixture.id("app/Caches/blob")), NodeColor::share(1.0));
    EXPECT_EQ(map->color(fixture.id("app/data.db")), NodeColor::share(0.0));
    EXPECT_EQ(map->color(fixture.id("emptyFolder")), NodeColor::unknown());
}

TEST(ColorMap, OnDiskVersusSize)
{
    TreeFixture fixture;
    fixture.add({ "sparse", 10, NodeKind::file, 1000 });
    fixture.add({ "empty", 0, NodeKind::file, 0 });
    fixture.add({ "whole/a", 4096, NodeKind::file, 1000 });
    NodeID partial = fixture.add("partial/");
    fixture.add({ "partial/a", 100, NodeKind::file, 100 });
    fixture.builder().addSizesWithoutNodes(partial, 0, 0, true);
    auto tree = fixture.finish();
    auto map = ColorMap::make(ColorMode::onDiskVsSize, tree, { .boundaries = boundaries() });
    EXPECT_EQ(map->color(fixture.id("sparse")), NodeColor::ratio(0.01));
    EXPECT_EQ(map->color(fixture.id("whole")), NodeColor::ratio(4.096));
    EXPECT_EQ(map->color(fixture.id("empty")), NodeColor::unknown());
    EXPECT_EQ(map->color(partial), NodeColor::unknown());
    EXPECT_EQ(map->color(NodeID::root()), NodeColor::unknown()); // a lower bound inside makes the root's sizes lower bounds
}

TEST(ColorMap, OwnerModeFromAnAssignment)
{
    TreeFixture fixture;
    NodeID app = fixture.add("Applications/Editor.app/binary", 70);
    NodeID system = fixture.add("System/kernel", 20);
    NodeID loose = fixture.add("loose", 10);
    auto tree = fixture.finish();
    const auto count = static_cast<std::size_t>(tree->count());

    OwnerBuckets::Assignment assignment;
    assignment.groups = { ColorGroup::owner("org.example.editor"), ColorGroup::macOS(), ColorGroup::noOwner(), ColorGroup::otherApps() };
    assignment.categories.assign(count, 2);
    assignment.fallbacks.assign(count, 2);
    assignment.categories[app.index()] = 0;
    assignment.categories[system.index()] = 1;
    assignment.categories[loose.index()] = 3;
    assignment.unknown = 2;
    auto owner = OwnerBuckets::build(tree, assignment);
    ASSERT_NE(owner, nullptr);
    auto map = ColorMap::make(ColorMode::owner, tree, { .owner = owner, .boundaries = boundaries() });
    ASSERT_TRUE(map->available());
    EXPECT_EQ(map->color(NodeID::root()), NodeColor::group(ColorGroup::owner("org.example.editor")));
    EXPECT_EQ(map->color(system), NodeColor::group(ColorGroup::macOS()));
    EXPECT_EQ(map->color(loose), NodeColor::group(ColorGroup::otherApps()));
    EXPECT_EQ(owner->buckets().totals(NodeID::root()), (std::vector<std::int64_t> { 70, 20, 0, 10 }));

    std::vector<std::string> keys;
    for (const ColorGroup& group : map->groups())
        keys.push_back(group.key().value_or("?"));
    EXPECT_EQ(keys, (std::vector<std::string> { "org.example.editor", "system:macos", "system:no-owner", "system:other-apps" }));
    EXPECT_EQ(ColorGroup::content(ContentCategory::video).key(), std::nullopt);

    // Without an owner assignment, or with one that does not fit, nothing is known.
    auto missing = ColorMap::make(ColorMode::owner, tree, { .boundaries = boundaries() });
    EXPECT_FALSE(missing->available());
    EXPECT_EQ(missing->color(NodeID::root()), NodeColor::unknown());
    OwnerBuckets::Assignment notOwners = assignment;
    notOwners.groups[1] = ColorGroup::content(ContentCategory::system);
    EXPECT_EQ(OwnerBuckets::build(tree, notOwners), nullptr);
    OwnerBuckets::Assignment wrongSize = assignment;
    wrongSize.fallbacks.pop_back();
    EXPECT_EQ(OwnerBuckets::build(tree, wrongSize), nullptr);
}

TEST(ColorMode, NamesRoundTrip)
{
    for (ColorMode mode : allColorModes) {
        EXPECT_EQ(ColorModes::fromRawValue(ColorModes::rawValue(mode)), mode);
        EXPECT_EQ(ColorModes::fromCommandLineName(ColorModes::commandLineName(mode)), mode);
    }
    EXPECT_EQ(ColorModes::commandLineName(ColorMode::hiddenFromFinder), "hidden");
    EXPECT_EQ(ColorModes::title(ColorMode::onDiskVsSize), "On Disk vs. Size");
    EXPECT_EQ(ColorModes::fromCommandLineName("contentType"), std::nullopt);
}
