#include "History/HistoryChanges.hpp"

#include "History/SnapshotFixture.hpp"

#include <gtest/gtest.h>

#include <map>

using namespace tarnwick;
using namespace tarnwick::testing;
using namespace tarnwick::HistoryQueries;

namespace {

constexpr std::int64_t MB = 1'000'000;

using File = SampleFile;

// A snapshot with colours of a tree of files; folders named in `unread` could not be listed.
std::shared_ptr<const Snapshot> snapshotOf(const std::vector<File>& files, const std::vector<std::string>& unread = {},
    std::int64_t dateOffsetDays = 0)
{
    Snapshot snapshot = snapshotOfFiles(files, unread);
    snapshot.date += std::chrono::days(dateOffsetDays);
    return std::make_shared<const Snapshot>(std::move(snapshot));
}

const PlaceChange* find(const std::vector<PlaceChange>& places, std::string_view path)
{
    for (const PlaceChange& place : places) {
        if (place.path == path)
            return &place;
    }
    return nullptr;
}

const std::vector<File> earlierFiles {
    { "Projects/Build/out.zip", 20 * MB }, { "Projects/src.txt", 20 * MB }, { "Photos/a.jpg", 30 * MB },
    { "Old/movie.mp4", 15 * MB }, { "notes.txt", 5 * MB },
};
const std::vector<File> laterFiles {
    { "Projects/Build/out.zip", 45 * MB }, { "Projects/src.txt", 25 * MB }, { "Photos/a.jpg", 25 * MB },
    { "New/song.mp3", 12 * MB }, { "notes.txt", 6 * MB },
};

}

TEST(HistoryChanges, GrowthShrinkNewAndRemovedFolders)
{
    auto result = changes(snapshotOf(earlierFiles), snapshotOf(laterFiles, {}, 30));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->place, "/scan");
    EXPECT_EQ(result->sizes, SizeBasis::precise);
    EXPECT_EQ(result->sizeBefore, 90 * MB);
    EXPECT_EQ(result->sizeAfter, 113 * MB);
    EXPECT_EQ(result->change, 23 * MB);
    EXPECT_FALSE(result->isUncertain);
    EXPECT_EQ(result->moreInside, 0);

    struct Expected {
        const char* path;
        std::int64_t before, after;
        Presence presence;
    };
    const Expected inside[] = {
        { "/scan/Projects", 40 * MB, 70 * MB, Presence::both },
        { "/scan/Old", 15 * MB, 0, Presence::earlierOnly },
        { "/scan/New", 0, 12 * MB, Presence::laterOnly },
        { "/scan/Photos", 30 * MB, 25 * MB, Presence::both },
    };
    ASSERT_EQ(result->inside.size(), std::size(inside));
    for (std::size_t i = 0; i < std::size(inside); ++i) {
        EXPECT_EQ(result->inside[i].path, inside[i].path) << i;
        EXPECT_EQ(result->inside[i].before, inside[i].before) << i;
        EXPECT_EQ(result->inside[i].after, inside[i].after) << i;
        EXPECT_EQ(result->inside[i].presence, inside[i].presence) << i;
        EXPECT_FALSE(result->inside[i].isUncertain) << i;
    }
    // Only the file directly in the root is not listed one by one.
    EXPECT_EQ(result->rest, (RestChange { 5 * MB, 6 * MB, false }));
}

TEST(HistoryChanges, GrewMostNamesTheDeepestPlaceOfTheGrowth)
{
    auto result = changes(snapshotOf(earlierFiles), snapshotOf(laterFiles, {}, 30));
    ASSERT_TRUE(result);
    // Projects grew 30 MB, 25 MB of it in Build: Build explains it, Projects does not get listed.
    ASSERT_EQ(result->grewMost.size(), 2U);
    EXPECT_EQ(result->grewMost[0].path, "/scan/Projects/Build");
    EXPECT_EQ(result->grewMost[0].change(), 25 * MB);
    EXPECT_EQ(result->grewMost[1].path, "/scan/New");
    EXPECT_EQ(find(result->grewMost, "/scan/Projects"), nullptr);

    // Growth spread over several places stays with the place that holds them.
    auto spread = changes(snapshotOf({ { "P/A/a.bin", 10 * MB }, { "P/B/b.bin", 10 * MB }, { "P/C/c.bin", 10 * MB } }),
        snapshotOf({ { "P/A/a.bin", 14 * MB }, { "P/B/b.bin", 14 * MB }, { "P/C/c.bin", 14 * MB } }));
    ASSERT_TRUE(spread);
    ASSERT_FALSE(spread->grewMost.empty());
    EXPECT_EQ(spread->grewMost[0].path, "/scan/P");
    EXPECT_EQ(spread->grewMost[0].change(), 12 * MB);
}

TEST(HistoryChanges, ByTypeFromTheColourTotals)
{
    auto result = changes(snapshotOf(earlierFiles), snapshotOf(laterFiles, {}, 30));
    ASSERT_TRUE(result);
    std::map<ContentCategory, TypeChange> byType;
    for (const TypeChange& type : result->byType)
        byType[type.category] = type;
    EXPECT_EQ(byType[ContentCategory::archives], (TypeChange { ContentCategory::archives, 20 * MB, 45 * MB }));
    EXPECT_EQ(byType[ContentCategory::video], (TypeChange { ContentCategory::video, 15 * MB, 0 }));
    EXPECT_EQ(byType[ContentCategory::music], (TypeChange { ContentCategory::music, 0, 12 * MB }));
    EXPECT_EQ(byType[ContentCategory::photos], (TypeChange { ContentCategory::photos, 30 * MB, 25 * MB }));
    EXPECT_EQ(result->byType.front().category, ContentCategory::archives); // largest change first
    std::int64_t before = 0, after = 0;
    for (const TypeChange& type : result->byType)
        before += type.before, after += type.after;
    EXPECT_EQ(before, result->sizeBefore);
    EXPECT_EQ(after, result->sizeAfter);
}

TEST(HistoryChanges, WithoutColoursAtOneEndSizesAreRoundedAndThereIsNoByType)
{
    TreeFixture tree;
    for (const File& file : earlierFiles)
        tree.add(file.path, file.bytes + 1'234'567);
    auto plain = std::make_shared<const Snapshot>(reduceWithoutColors(tree.finish()));
    auto result = changes(plain, snapshotOf(laterFiles));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->sizes, SizeBasis::rounded);
    EXPECT_TRUE(result->byType.empty());
    EXPECT_EQ(result->sizeBefore, 90 * MB);
    EXPECT_EQ(result->sizeAfter, 110 * MB);
    const PlaceChange* projects = find(result->inside, "/scan/Projects");
    ASSERT_NE(projects, nullptr);
    EXPECT_EQ(projects->before, 40 * MB);
}

TEST(HistoryChanges, AFolderOnlyOneScanReadIsUncertain)
{
    // The earlier scan could not list Shared/Locked; the later one read it (18 MB).
    auto earlier = snapshotOf({ { "Shared/doc.txt", 20 * MB }, { "Photos/a.jpg", 30 * MB } }, { "Shared/Locked" });
    auto later = snapshotOf({ { "Shared/doc.txt", 20 * MB }, { "Shared/Locked/data.bin", 18 * MB }, { "Photos/a.jpg", 31 * MB } });
    ASSERT_TRUE(earlier->flags[static_cast<std::size_t>(*earlier->node("Shared"))].contains(NodeFlag::incomplete));
    auto result = changes(earlier, later);
    ASSERT_TRUE(result);
    EXPECT_TRUE(result->isUncertain);
    EXPECT_TRUE(result->rest.isUncertain);
    const PlaceChange* shared = find(result->inside, "/scan/Shared");
    const PlaceChange* photos = find(result->inside, "/scan/Photos");
    ASSERT_TRUE(shared && photos);
    EXPECT_TRUE(shared->isUncertain);
    EXPECT_EQ(shared->change(), 18 * MB);
    EXPECT_FALSE(photos->isUncertain);
    EXPECT_EQ(result->readByOneScan, (std::vector<OneScanPlace> { { "/scan/Shared", ReadBy::laterScan } }));
    const PlaceChange* locked = find(result->grewMost, "/scan/Shared/Locked");
    ASSERT_NE(locked, nullptr);
    EXPECT_TRUE(locked->isUncertain);

    // The other way round, the later scan is the one that read less.
    auto reversed = changes(later, earlier);
    ASSERT_TRUE(reversed);
    EXPECT_EQ(reversed->readByOneScan, (std::vector<OneScanPlace> { { "/scan/Shared", ReadBy::earlierScan } }));
}

TEST(HistoryChanges, AKeptFolderUnreadInOneScanIsListedItself)
{
    // Big/Inner is kept in both, but the later scan could only list part of it.
    auto earlier = snapshotOf({ { "Big/Inner/a.bin", 40 * MB }, { "Big/Inner/Sub/b.bin", 5 * MB } });
    auto later = snapshotOf({ { "Big/Inner/a.bin", 40 * MB } }, { "Big/Inner/Sub" });
    auto result = changes(earlier, later);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->readByOneScan, (std::vector<OneScanPlace> { { "/scan/Big/Inner", ReadBy::earlierScan } }));
    ASSERT_EQ(result->inside.size(), 1U);
    EXPECT_TRUE(result->inside[0].isUncertain);
    EXPECT_EQ(result->inside[0].change(), -5 * MB);
}

TEST(HistoryChanges, PlacesInsideTheSnapshots)
{
    auto earlier = snapshotOf(earlierFiles);
    auto later = snapshotOf(laterFiles);
    auto projects = changes(earlier, later, "/scan/Projects");
    ASSERT_TRUE(projects);
    EXPECT_EQ(projects->place, "/scan/Projects");
    EXPECT_EQ(projects->change, 30 * MB);
    ASSERT_EQ(projects->inside.size(), 1U);
    EXPECT_EQ(projects->inside[0].path, "/scan/Projects/Build");
    EXPECT_EQ(projects->rest, (RestChange { 20 * MB, 25 * MB, false }));

    auto relative = changes(earlier, later, "Projects/Build");
    ASSERT_TRUE(relative);
    EXPECT_EQ(relative->change, 25 * MB);

    auto added = changes(earlier, later, "/scan/New");
    ASSERT_TRUE(added);
    EXPECT_EQ(added->sizeBefore, 0);
    EXPECT_EQ(added->sizeAfter, 12 * MB);

    EXPECT_EQ(changes(earlier, later, "/elsewhere/Projects").error(), ChangesError::outsideSnapshots);
    EXPECT_EQ(changes(earlier, later, "/scan/Nothing").error(), ChangesError::notKept);
    EXPECT_FALSE(ChangeTexts::message(ChangesError::notKept).empty());
}

TEST(HistoryChanges, InsideKeepsTheLargestTwentyChanges)
{
    std::vector<File> before, after;
    for (int i = 0; i < 25; ++i) {
        std::string folder = "F" + std::to_string(i) + "/f.bin";
        before.push_back({ folder, 20 * MB });
        after.push_back({ folder, (i % 2 ? 19 - i / 2 : 20 + i) * MB });
    }
    auto result = changes(snapshotOf(before), snapshotOf(after));
    ASSERT_TRUE(result);
    ASSERT_EQ(result->inside.size(), insideLimit);
    EXPECT_EQ(result->moreInside, 24 - static_cast<std::int64_t>(insideLimit)); // F0 did not change
    for (std::size_t i = 1; i < result->inside.size(); ++i)
        EXPECT_GE(std::abs(result->inside[i - 1].change()), std::abs(result->inside[i].change())) << i;
    EXPECT_EQ(result->inside[0].path, "/scan/F24");
}

TEST(HistoryChanges, SizeHistoryDoesNotCountReadingMoreAsGrowth)
{
    auto partly = snapshotOf({ { "Shared/doc.txt", 20 * MB }, { "Photos/a.jpg", 30 * MB } }, { "Shared/Locked" }, -2);
    auto whole = snapshotOf({ { "Shared/doc.txt", 20 * MB }, { "Shared/Locked/data.bin", 18 * MB }, { "Photos/a.jpg", 30 * MB } }, {}, -1);
    auto latest = snapshotOf({ { "Shared/doc.txt", 22 * MB }, { "Shared/Locked/data.bin", 18 * MB }, { "Photos/a.jpg", 30 * MB } });
    std::vector<std::shared_ptr<const Snapshot>> list { partly, whole, latest };

    std::vector<SizePoint> root = sizeHistory(list);
    ASSERT_EQ(root.size(), 3U);
    EXPECT_EQ(root[0].date, partly->date);
    // The first scan missed Shared: it counts as the latest saw it (40 MB) instead of 20 MB.
    EXPECT_EQ(root[0].bytes, 70 * MB);
    EXPECT_EQ(root[1].bytes, 68 * MB);
    EXPECT_EQ(root[2].bytes, 70 * MB);

    std::vector<SizePoint> photos = sizeHistory(list, "/scan/Photos");
    EXPECT_EQ(photos[0].bytes, 30 * MB);
    EXPECT_EQ(sizeHistory(list, "/scan/Missing")[0].bytes, 0);
}

TEST(HistoryChanges, TextExport)
{
    auto result = changes(snapshotOf({ { "Shared/doc.txt", 20 * MB }, { "Photos/a.jpg", 30'050'000 } }, { "Shared/Locked" }),
        snapshotOf({ { "Shared/doc.txt", 20 * MB }, { "Shared/Locked/data.bin", 18 * MB }, { "Photos/a.jpg", 25 * MB } }, {}, 31));
    ASSERT_TRUE(result);
    const FixedTimeZone zone(fixtureZoneOffset);
    std::string text = exportText(*result, zone);
    // 2024-06-01 12:00 UTC is 14:00 in UTC+2.
    EXPECT_EQ(text.substr(0, text.find('\n')), "Place\t2024-06-01 14:00 (MB)\t2024-07-02 14:00 (MB)\tChange (MB)");
    EXPECT_NE(text.find("\n/scan\t50.1\t63.0\t≈+13.0\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\nPhotos\t30.1\t25.0\t-5.1\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\nShared\t20.0\t38.0\t≈+18.0\n"), std::string::npos) << text;
    EXPECT_NE(text.find("other items (Files and smaller folders, which snapshots don't list one by one, and the rounding of each size)\t0.0\t0.0\t≈0.0"),
        std::string::npos) << text;
    EXPECT_NE(text.find("/scan/Shared\tread only by the scan of 2024-07-02 14:00"), std::string::npos) << text;
}
