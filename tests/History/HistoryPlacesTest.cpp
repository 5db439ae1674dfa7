#include "History/HistoryPlaces.hpp"
#include "History/SnapshotLoader.hpp"

#include "History/HistoryChanges.hpp"
#include "History/HistoryTestSupport.hpp"
#include "History/SnapshotFixture.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using fixtures::utc;
using testing::TreeFixture;

HistoryStore::SourceRecord record(std::string path, std::string volume, Date saved = {})
{
    HistoryStore::SourceRecord record;
    record.source = HistorySource { std::move(path), std::move(volume) };
    record.current = HistoryEntry { .id = 1, .date = saved };
    return record;
}

std::vector<std::string> pathsOf(const std::vector<HistoryStore::SourceRecord>& records)
{
    std::vector<std::string> paths;
    for (const auto& record : records)
        paths.push_back(record.source.path + "@" + record.source.volume);
    return paths;
}

TEST(HistoryPlacesTest, HoldingSourcesComeDeepestFirst)
{
    const std::vector<HistoryStore::SourceRecord> records {
        record("/", "disk"),
        record("/home/ann", "disk"),
        record("/home/ann/Projects", "disk"),
        record("/home/annex", "disk"),
        record("/home/ann/Projects/", "disk2"), // a trailing slash holds the same places
    };
    const struct {
        const char* place;
        std::vector<std::string> expected;
    } cases[] = {
        { "/home/ann/Projects/app", { "/home/ann/Projects@disk", "/home/ann/Projects/@disk2", "/home/ann@disk", "/@disk" } },
        { "/home/ann", { "/home/ann@disk", "/@disk" } },
        { "/home/annex/a", { "/home/annex@disk", "/@disk" } }, // "/home/ann" is no prefix of "/home/annex"
        { "/srv", { "/@disk" } },
        { "/", { "/@disk" } },
    };
    for (const auto& test : cases)
        EXPECT_EQ(pathsOf(HistoryPlaces::holding(records, test.place)), test.expected) << test.place;
}

TEST(HistoryPlacesTest, OfSourcesAtOnePathTheVolumeThenTheLatestSaveWins)
{
    const std::vector<HistoryStore::SourceRecord> records {
        record("/media/backup", "old", utc(2025, 1, 1)),
        record("/media/backup", "new", utc(2025, 6, 1)),
        record("/media/backup", "plugged", utc(2024, 1, 1)),
    };
    EXPECT_EQ(pathsOf(HistoryPlaces::holding(records, "/media/backup/x")),
        (std::vector<std::string> { "/media/backup@new", "/media/backup@old", "/media/backup@plugged" }));
    EXPECT_EQ(pathsOf(HistoryPlaces::holding(records, "/media/backup/x", "plugged")).front(), "/media/backup@plugged");
}

class HistoryPlacesStoreTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        auto opened = HistoryStore::open(temp / "History", Calendar::fixed(0), HistoryStore::defaultSizeLimit, [this] { return clock; });
        ASSERT_TRUE(opened.has_value());
        store = std::move(*opened);
    }

    // Saves a scan of rootPath made of the given files, at the clock's time.
    void save(const std::string& rootPath, const std::vector<std::pair<std::string, std::int64_t>>& files)
    {
        TreeFixture fixture;
        for (const auto& [path, bytes] : files)
            fixture.add(path, bytes);
        Snapshot snapshot = testing::reduceWithColors(fixture.finish(TreeBuilder::Metadata::included, rootPath));
        snapshot.date = clock;
        auto encoded = Snapshot::encodeForStore(std::move(snapshot));
        ASSERT_TRUE(encoded.has_value());
        HistoryStore::SnapshotFiles scan;
        scan.date = clock;
        scan.total = encoded->snapshot.size(0);
        scan.current = encoded->current;
        scan.day = encoded->day;
        ASSERT_TRUE(store->save(HistorySource { rootPath, "disk" }, scan).has_value());
    }

    std::optional<std::string> sourceKeeping(std::vector<std::string> forms)
    {
        auto located = HistoryPlaces::locate(*store, forms);
        if (!located)
            return std::nullopt;
        EXPECT_EQ(located->current->path(located->node), located->place);
        return located->record.source.path;
    }

    fixtures::TempFolder temp;
    Date clock = utc(2025, 3, 10, 9);
    std::unique_ptr<HistoryStore> store;
};

TEST_F(HistoryPlacesStoreTest, APlaceIsFoundInTheDeepestSnapshotThatKeepsIt)
{
    save("/data", { { "projects/app/build.o", 40'000'000 }, { "music/a.mp3", 30'000'000 }, { "small/a.txt", 1'000 } });
    save("/data/projects", { { "app/build.o", 50'000'000 }, { "tools/x", 12'000'000 } });

    EXPECT_EQ(sourceKeeping({ "/data/projects/app" }), "/data/projects");
    EXPECT_EQ(sourceKeeping({ "/data/projects" }), "/data/projects");
    EXPECT_EQ(sourceKeeping({ "/data/music" }), "/data");
    EXPECT_EQ(sourceKeeping({ "/data" }), "/data");
    // Under 10 MB, never scanned, or outside every source: no snapshot keeps it.
    EXPECT_EQ(sourceKeeping({ "/data/small" }), std::nullopt);
    EXPECT_EQ(sourceKeeping({ "/data/projects/nothing" }), std::nullopt);
    EXPECT_EQ(sourceKeeping({ "/elsewhere" }), std::nullopt);
    // A link's own path is not kept; its target is.
    EXPECT_EQ(sourceKeeping({ "/home/ann/link-to-app", "/data/projects/app" }), "/data/projects");
}

TEST_F(HistoryPlacesStoreTest, ADamagedLatestSnapshotFallsBackToTheDaySnapshotThenToAShallowerSource)
{
    save("/data", { { "projects/app/build.o", 40'000'000 } });
    save("/data/projects", { { "app/build.o", 50'000'000 } });
    auto projects = store->record(HistorySource { "/data/projects", "disk" });
    ASSERT_TRUE(projects.has_value());
    auto damage = [&](const std::string& file) {
        std::FILE* stream = std::fopen((temp / "History/" + projects->folder + "/" + file).c_str(), "wb");
        ASSERT_NE(stream, nullptr);
        std::fputs("not a snapshot", stream);
        std::fclose(stream);
    };
    damage("current.snap");
    auto located = HistoryPlaces::locate(*store, std::vector<std::string> { "/data/projects/app" });
    ASSERT_TRUE(located);
    EXPECT_EQ(located->record.source.path, "/data/projects");
    EXPECT_FALSE(located->latestIsCurrent);
    EXPECT_EQ(located->latest.file, projects->entries.back().file);

    damage(projects->entries.back().file);
    EXPECT_EQ(sourceKeeping({ "/data/projects/app" }), "/data");
}

TEST_F(HistoryPlacesStoreTest, SeriesEndsWithTheCurrentSnapshotOnlyWhenItIsNewerThanTheDays)
{
    save("/data", { { "a/x", 20'000'000 } });
    clock = utc(2025, 3, 10, 15);
    save("/data", { { "a/x", 25'000'000 } }); // same day: current only
    clock = utc(2025, 3, 11, 8);
    save("/data", { { "a/x", 35'000'000 } }); // a new day: both day and current

    auto snapshots = [&] {
        std::vector<std::shared_ptr<const Snapshot>> list;
        for (const auto& item : SnapshotLoader::series(*store, *store->record(HistorySource { "/data", "disk" })))
            list.push_back(item.snapshot);
        return list;
    };
    auto series = snapshots();
    ASSERT_EQ(series.size(), 2u);
    EXPECT_EQ(series[0]->date, utc(2025, 3, 10, 9));
    EXPECT_EQ(series[1]->date, utc(2025, 3, 11, 8));

    clock = utc(2025, 3, 11, 20);
    save("/data", { { "a/x", 45'000'000 } });
    series = snapshots();
    ASSERT_EQ(series.size(), 3u);
    EXPECT_EQ(series.back()->date, utc(2025, 3, 11, 20));
    auto sizes = HistoryQueries::sizeHistory(series, "/data/a");
    ASSERT_EQ(sizes.size(), 3u);
    EXPECT_EQ(sizes.front().bytes, 20'000'000);
    EXPECT_EQ(sizes.back().bytes, 45'000'000);
}

}
}
