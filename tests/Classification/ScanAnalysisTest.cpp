#include "Classification/ScanAnalysis.hpp"

#include "Classification/OwnerPlaces.hpp"
#include "Classification/TreeFixture.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;
using tarnwick::testing::TreeFixture;

namespace {

constexpr std::int64_t now = 1709294400; // 2024-03-01 12:00 UTC
constexpr std::int64_t day = 86400;

Date at(std::int64_t unixSeconds) { return Date(std::chrono::seconds(unixSeconds)); }
std::int32_t daysAgo(std::int64_t days) { return static_cast<std::int32_t>(now - days * day - TreeDate::referenceUnixSeconds); }
DateGroup::Boundaries boundariesAt(std::int64_t unixSeconds) { return DateGroup::Boundaries::make(at(unixSeconds), FixedTimeZone(0)); }

// A home folder whose nodes fall in different groups in every mode: apps' places, hidden
// items, caches, and modification and creation dates that are not the same.
std::shared_ptr<const ScanTree> homeTree()
{
    TreeFixture fixture("alice");
    fixture.add({ "snap/bar/common/db", 80'000, NodeKind::file, std::nullopt, daysAgo(0), daysAgo(200) });
    fixture.add({ ".cache/thumbnails/a.png", 50'000, NodeKind::file, std::nullopt, daysAgo(3), daysAgo(3), true });
    fixture.add({ ".cache/thumbnails/b.png", 20'000, NodeKind::file, std::nullopt, daysAgo(40), daysAgo(40), true });
    fixture.add({ "Movies/trip.mp4", 300'000, NodeKind::file, 290'000, daysAgo(20), daysAgo(500) });
    fixture.add({ "Movies/clip.mov", 100'000, NodeKind::file, 99'000, daysAgo(0), daysAgo(0) });
    fixture.add({ "Documents/letter.txt", 4'096, NodeKind::file, 12, daysAgo(400), daysAgo(2) });
    fixture.add({ "Documents/empty/", 0, NodeKind::directory, std::nullopt, daysAgo(7), daysAgo(7) });
    fixture.add({ ".profile", 4'096, NodeKind::file, 300, daysAgo(900), TreeDate::noDate, true });
    return fixture.finish(TreeBuilder::Metadata::included, "/home/alice");
}

}

// Each mode's colours are those a colour map of that mode alone gives the same tree, and
// they are read from the analysis's own maps, the ones the snapshot is cut from.
TEST(ScanAnalysis, ColorsEveryModeFromItsOwnMaps)
{
    auto tree = homeTree();
    OwnerIndex index(ApplicationRoots::under("/home/alice", ""));
    OwnerPlaces places(index);
    const DateGroup::Boundaries boundaries = boundariesAt(now);
    auto analysis = ScanAnalysis::make(tree, boundaries, &places);
    ASSERT_NE(analysis, nullptr);
    EXPECT_EQ(analysis->tree(), tree);
    EXPECT_EQ(analysis->boundaries(), boundaries);
    ASSERT_NE(analysis->owners(), nullptr);

    struct Case {
        ColorMode mode;
        std::shared_ptr<const BucketMap> ownMap; // the map the mode's colours must come from
    };
    const Case cases[] = {
        { ColorMode::contentType, nullptr },
        { ColorMode::owner, nullptr },
        { ColorMode::lastModified, analysis->modified() },
        { ColorMode::created, analysis->created() },
        { ColorMode::caches, nullptr },
        { ColorMode::hiddenFromFinder, analysis->hidden() },
        { ColorMode::onDiskVsSize, nullptr },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(ColorModes::title(c.mode)));
        const auto& colors = analysis->colors(c.mode);
        ASSERT_NE(colors, nullptr);
        EXPECT_TRUE(colors->available());
        EXPECT_EQ(colors->mode(), c.mode);
        if (c.ownMap) {
            ASSERT_NE(c.ownMap, nullptr);
            EXPECT_EQ(colors->buckets(), c.ownMap);
        }
        if (c.mode == ColorMode::contentType || c.mode == ColorMode::caches) {
            EXPECT_EQ(colors->content(), analysis->content());
        }
        if (c.mode == ColorMode::owner) {
            EXPECT_EQ(colors->owner(), analysis->ownerBuckets());
        }

        ColorMap::Sources alone { .owner = OwnerMap::build(*tree, places).buckets(tree), .boundaries = boundaries };
        auto expected = ColorMap::make(c.mode, tree, std::move(alone));
        for (NodeID node { 0 }; node.value < tree->count(); ++node.value)
            EXPECT_EQ(colors->color(node), expected->color(node)) << tree->path(node);
    }
    // The dates differ between the two date modes, so a mix-up of their maps shows.
    NodeID letter = *tree->node("Documents/letter.txt");
    EXPECT_NE(analysis->colors(ColorMode::lastModified)->color(letter), analysis->colors(ColorMode::created)->color(letter));
}

// On another calendar day only the date groups change: everything else is the same maps,
// not made again, and the analysis of the day before stays as it was.
TEST(ScanAnalysis, RedatedRegroupsTheDatesAndSharesTheRest)
{
    auto tree = homeTree();
    OwnerIndex index(ApplicationRoots::under("/home/alice", ""));
    OwnerPlaces places(index);
    auto before = ScanAnalysis::make(tree, boundariesAt(now), &places);
    const DateGroup::Boundaries nextDay = boundariesAt(now + day);
    auto after = before->redated(nextDay);

    EXPECT_EQ(after->boundaries(), nextDay);
    EXPECT_EQ(before->boundaries(), boundariesAt(now));
    EXPECT_EQ(after->tree(), before->tree());
    EXPECT_EQ(after->content(), before->content());
    EXPECT_EQ(after->owners(), before->owners());
    EXPECT_EQ(after->ownerBuckets(), before->ownerBuckets());
    EXPECT_EQ(after->hidden(), before->hidden());
    EXPECT_NE(after->modified(), before->modified());
    EXPECT_NE(after->created(), before->created());

    struct Case {
        const char* path;
        ColorMode mode;
        DateGroup before;
        DateGroup after;
    };
    const Case cases[] = {
        { "Movies/clip.mov", ColorMode::lastModified, DateGroup::today, DateGroup::past7Days },
        { "snap/bar/common/db", ColorMode::lastModified, DateGroup::today, DateGroup::past7Days },
        { "Documents/empty", ColorMode::created, DateGroup::past7Days, DateGroup::past30Days },
        { "Documents/letter.txt", ColorMode::created, DateGroup::past7Days, DateGroup::past7Days },
        { "Movies/trip.mp4", ColorMode::lastModified, DateGroup::past30Days, DateGroup::past30Days },
    };
    for (const Case& c : cases) {
        NodeID node = *tree->node(c.path);
        EXPECT_EQ(before->colors(c.mode)->color(node), NodeColor::group(ColorGroup::date(c.before))) << c.path;
        EXPECT_EQ(after->colors(c.mode)->color(node), NodeColor::group(ColorGroup::date(c.after))) << c.path;
    }
    for (ColorMode mode : { ColorMode::contentType, ColorMode::owner, ColorMode::hiddenFromFinder }) {
        for (NodeID node { 0 }; node.value < tree->count(); ++node.value)
            EXPECT_EQ(after->colors(mode)->color(node), before->colors(mode)->color(node)) << tree->path(node);
    }
}
