#include "Alerts/SpaceAlertStore.hpp"
#include "History/HistoryTestSupport.hpp"
#include "MenuBar/MenuBarDisks.hpp"
#include "History/PeriodChanges.hpp"
#include "Platform/UserDefaults.hpp"
#include "SavedScans.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <fstream>

using namespace tarnwick;
using namespace tarnwick::testing;
using fixtures::utc;

namespace {

// A place scanned three days ago, yesterday evening and this morning; the clock stands at noon.
class PeriodChangesTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        store = std::move(*HistoryStore::open(folder / "History", Calendar::fixed(0), HistoryStore::defaultSizeLimit, [this] { return now; }));
        saveScan(*store, place, *threeDaysAgo, utc(2024, 6, 7, 9));
        saveScan(*store, place, *yesterday, utc(2024, 6, 9, 22));
        saveScan(*store, place, *today, utc(2024, 6, 10, 8));
    }

    fixtures::TempFolder folder;
    Date now = utc(2024, 6, 10, 12);
    std::unique_ptr<HistoryStore> store;
    HistorySource place { "/data", "volume-1" };
    std::shared_ptr<const ScanTree> threeDaysAgo = treeOf("/data", { { "Videos/a.mp4", 50 * MB }, { "Code/src.tar", 30 * MB }, { "Old/x.bin", 20 * MB } });
    std::shared_ptr<const ScanTree> yesterday = treeOf("/data", { { "Videos/a.mp4", 60 * MB }, { "Code/src.tar", 30 * MB }, { "Old/x.bin", 20 * MB } });
    std::shared_ptr<const ScanTree> today = treeOf("/data",
        { { "Videos/a.mp4", 80 * MB }, { "Code/src.tar", 30 * MB }, { "New/y.bin", 15 * MB }, { "Videos/Clips/c.mov", 20 * MB } });
};

}

TEST_F(PeriodChangesTest, ComparesTheCurrentScanWithThePeriodsStart)
{
    struct Case {
        HistoryPeriod period;
        Date start;
        std::int64_t rootChange;
    };
    const Case cases[] {
        // Yesterday evening is before today; three days ago is the earliest when the history is shorter.
        { HistoryPeriod::yesterday, utc(2024, 6, 9, 22), (80 + 20 + 30 + 10) * MB - (60 + 30 + 20) * MB },
        { HistoryPeriod::dayBeforeYesterday, utc(2024, 6, 7, 9), 140 * MB - 100 * MB },
        { HistoryPeriod::month, utc(2024, 6, 7, 9), 40 * MB },
        { HistoryPeriod::all, utc(2024, 6, 7, 9), 40 * MB },
    };
    for (const Case& c : cases) {
        auto changes = PeriodChanges::load(*store, place, c.period, utc(2024, 6, 10, 8));
        ASSERT_TRUE(changes) << c.period.rawValue();
        EXPECT_EQ(changes->start().date, c.start) << c.period.rawValue();
        EXPECT_FALSE(changes->startsWithThisScan());
        auto atRoot = changes->at("/data");
        ASSERT_TRUE(atRoot);
        EXPECT_EQ(atRoot->change, c.rootChange) << c.period.rawValue();
    }
}

TEST_F(PeriodChangesTest, ChangesOnTheTreeOfTheScan)
{
    auto changes = PeriodChanges::load(*store, place, HistoryPeriod::dayBeforeYesterday, utc(2024, 6, 10, 8));
    ASSERT_TRUE(changes);
    auto onTree = changes->onTree(*today);
    auto node = [&](const std::string& path) { return today->node("/data/" + path).value(); };
    ASSERT_TRUE(onTree.contains(node("Videos")));
    EXPECT_EQ(onTree.at(node("Videos")).change, 50 * MB);
    EXPECT_EQ(onTree.at(node("Videos/Clips")).change, 20 * MB);
    EXPECT_EQ(onTree.at(node("New")).change, 10 * MB); // kept rounded down to 10 MB
    EXPECT_EQ(onTree.at(NodeID::root()).change, 40 * MB);
    EXPECT_FALSE(onTree.contains(node("Code"))); // unchanged
    // "Old" is gone: the tree has no node for it.
    EXPECT_EQ(onTree.size(), 4u);

    // Inside a folder.
    auto videos = changes->at("/data/Videos");
    ASSERT_TRUE(videos);
    EXPECT_EQ(videos->change, 50 * MB);
    auto outside = changes->at("/elsewhere");
    ASSERT_FALSE(outside);
    EXPECT_EQ(outside.error(), HistoryQueries::ChangesError::outsideSnapshots);
}

TEST_F(PeriodChangesTest, WaitsForTheScansOwnSnapshot)
{
    auto later = PeriodChanges::load(*store, place, HistoryPeriod::yesterday, utc(2024, 6, 10, 11));
    ASSERT_FALSE(later);
    EXPECT_EQ(later.error(), PeriodChanges::Problem::notSavedYet);
    EXPECT_EQ(PeriodChanges::problemText(later.error()), "Saving this scan into the history…");
    EXPECT_FALSE(PeriodChanges::load(*store, { "/other", "volume-1" }, HistoryPeriod::yesterday, utc(2024, 6, 10, 8)));
}

TEST_F(PeriodChangesTest, TheFirstScanStartsWithItself)
{
    HistorySource fresh { "/fresh", "volume-1" };
    saveScan(*store, fresh, *treeOf("/fresh", { { "A/a", 20 * MB } }), utc(2024, 6, 10, 9));
    auto changes = PeriodChanges::load(*store, fresh, HistoryPeriod::week, utc(2024, 6, 10, 9));
    ASSERT_TRUE(changes);
    EXPECT_TRUE(changes->startsWithThisScan());
    EXPECT_EQ(changes->at("/fresh")->change, 0);
}

// The window and the tray read through the same loader as the commands: a damaged start
// snapshot gives way to the nearest intact one that is not the scan's own day.
TEST_F(PeriodChangesTest, ADamagedStartFallsBackToTheNearestIntactDay)
{
    auto record = store->record(place);
    ASSERT_TRUE(record);
    ASSERT_EQ(record->entries.size(), 3u);
    const std::string folderPath = store->directory() + "/" + record->folder + "/";
    struct Case {
        std::size_t damaged; // the day entry made unreadable
        HistoryPeriod period;
        Date start;
    };
    const Case cases[] {
        // Yesterday evening is damaged: three days ago, not this morning's own snapshot.
        { 1, HistoryPeriod::yesterday, utc(2024, 6, 7, 9) },
        // The earliest is damaged: the next one.
        { 0, HistoryPeriod::all, utc(2024, 6, 9, 22) },
    };
    for (const Case& c : cases) {
        const std::string file = folderPath + record->entries[c.damaged].file;
        const std::string bytes = fixtures::readFile(file);
        std::ofstream(file, std::ios::trunc) << "not a snapshot";
        auto changes = PeriodChanges::load(*store, place, c.period, utc(2024, 6, 10, 8));
        ASSERT_TRUE(changes) << c.period.rawValue();
        EXPECT_EQ(changes->start().date, c.start) << c.period.rawValue();
        EXPECT_FALSE(changes->startsWithThisScan());
        if (c.period == HistoryPeriod::yesterday) {
            UserDefaults defaults(folder / "defaults.json");
            MenuBarDisks disks(store.get(), defaults);
            auto change = disks.changeSinceYesterday(place);
            ASSERT_TRUE(change);
            EXPECT_EQ(change->bytes, changes->at("/data")->change);
            // The tray says which day it compared with.
            EXPECT_EQ(change->since, c.start);
        }
        std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
    }
}

// Compare with now from a saved day: that day exactly, and when it cannot be read any more, a
// plain failure rather than another day in its place.
TEST_F(PeriodChangesTest, FromAPickedDay)
{
    auto record = store->record(place);
    ASSERT_TRUE(record);
    ASSERT_EQ(record->entries.size(), 3u);
    struct Case {
        std::size_t day;
        std::int64_t rootChange;
    };
    const Case cases[] {
        { 0, 140 * MB - 100 * MB },
        { 1, 140 * MB - 110 * MB },
    };
    for (const Case& c : cases) {
        auto changes = PeriodChanges::loadSince(*store, place, record->entries[c.day], utc(2024, 6, 10, 8));
        ASSERT_TRUE(changes) << c.day;
        EXPECT_EQ(changes->start().date, record->entries[c.day].date);
        EXPECT_EQ(changes->at("/data")->change, c.rootChange) << c.day;
    }
    EXPECT_EQ(PeriodChanges::loadSince(*store, place, record->entries[0], utc(2024, 6, 10, 11)).error(), PeriodChanges::Problem::notSavedYet);
    std::ofstream(store->directory() + "/" + record->folder + "/" + record->entries[1].file, std::ios::trunc) << "not a snapshot";
    auto damaged = PeriodChanges::loadSince(*store, place, record->entries[1], utc(2024, 6, 10, 8));
    ASSERT_FALSE(damaged);
    EXPECT_EQ(damaged.error(), PeriodChanges::Problem::unreadable);
}

// Snapshots keep folders only: in a grown folder, the files changed since the start carry the
// growth on the map, largest first and no more than the folder grew, marked uncertain.
TEST_F(PeriodChangesTest, AGrownFoldersChangedFilesCarryItsGrowth)
{
    auto stored = [](Date date) { return TreeDate::encodeUnixSeconds(std::chrono::duration_cast<std::chrono::seconds>(date.time_since_epoch()).count()); };
    auto tree = [&](bool later) {
        TreeFixture fixture;
        fixture.add(TreeFixture::Item { "Videos/old.mp4", 30 * MB, NodeKind::file, std::nullopt, stored(utc(2024, 1, 1, 9)) });
        fixture.add(TreeFixture::Item { "Docs/x.pdf", 20 * MB, NodeKind::file, std::nullopt, stored(utc(2024, 1, 1, 9)) });
        if (later) {
            fixture.add(TreeFixture::Item { "Videos/new.mp4", 25 * MB, NodeKind::file, std::nullopt, stored(utc(2024, 6, 9, 12)) });
            fixture.add(TreeFixture::Item { "Videos/small.txt", 1 * MB, NodeKind::file, std::nullopt, stored(utc(2024, 6, 9, 13)) });
        }
        return fixture.finish(TreeBuilder::Metadata::included, "/media");
    };
    HistorySource media { "/media", "volume-1" };
    saveScan(*store, media, *tree(false), utc(2024, 6, 7, 9));
    auto now = tree(true);
    saveScan(*store, media, *now, utc(2024, 6, 10, 8));
    auto changes = PeriodChanges::load(*store, media, HistoryPeriod::dayBeforeYesterday, utc(2024, 6, 10, 8));
    ASSERT_TRUE(changes);
    auto onTree = changes->onTree(*now);
    auto node = [&](const std::string& path) { return now->node("/media/" + path).value(); };
    // Kept to 10 MB: Videos went from 30 to 50 MB.
    ASSERT_TRUE(onTree.contains(node("Videos")));
    EXPECT_EQ(onTree.at(node("Videos")).change, 20 * MB);
    ASSERT_TRUE(onTree.contains(node("Videos/new.mp4")));
    EXPECT_EQ(onTree.at(node("Videos/new.mp4")), (PeriodChanges::NodeChange { 20 * MB, true }));
    EXPECT_FALSE(onTree.contains(node("Videos/small.txt"))); // the growth is spent
    EXPECT_FALSE(onTree.contains(node("Videos/old.mp4")));   // not changed since
    EXPECT_FALSE(onTree.contains(node("Docs/x.pdf")));       // its folder did not grow
}

TEST_F(PeriodChangesTest, TheTraysChangeSinceYesterday)
{
    UserDefaults defaults(folder / "defaults.json");
    MenuBarDisks disks(store.get(), defaults);
    auto change = disks.changeSinceYesterday(place);
    ASSERT_TRUE(change);
    EXPECT_EQ(change->bytes, 30 * MB);
    EXPECT_FALSE(change->isUncertain);
    // Asked again, from what it kept.
    EXPECT_EQ(disks.changeSinceYesterday(place)->bytes, 30 * MB);

    // Only snapshots of today: no change since yesterday is known.
    HistorySource fresh { "/fresh", "volume-1" };
    saveScan(*store, fresh, *treeOf("/fresh", { { "A/a", 20 * MB } }), utc(2024, 6, 10, 9));
    saveScan(*store, fresh, *treeOf("/fresh", { { "A/a", 40 * MB } }), utc(2024, 6, 10, 10));
    EXPECT_FALSE(disks.changeSinceYesterday(fresh));

    EXPECT_EQ(MenuBarDisks::name("/"), "System Disk");
    EXPECT_EQ(MenuBarDisks::name("/media/ann/Backup/"), "Backup");
}

TEST_F(PeriodChangesTest, TheTrayMarksDisksWhoseAlertIsExceeded)
{
    UserDefaults defaults(folder / "defaults.json");
    SpaceAlertStore alerts(defaults);
    ASSERT_TRUE(alerts.add("/", SpaceAlertStore::PlaceKind::disk, { SpaceAlert::Condition::DiskUsed { 100 } }));
    auto folderAlert = alerts.add("/data/Videos", SpaceAlertStore::PlaceKind::folder, { SpaceAlert::Condition::Size { 10 } });
    ASSERT_TRUE(folderAlert);
    std::vector<MenuBarDisks::Disk> list { { { "/", "root" }, false }, { place, true } };
    MenuBarDisks disks(store.get(), defaults);
    auto read = disks.read(list);
    ASSERT_EQ(read.size(), 2u);
    EXPECT_FALSE(read[0].isAlerted); // a disk is never more than 100 % full
    EXPECT_FALSE(read[1].isAlerted); // the folder alert was not passed yet
    EXPECT_EQ(read[0].number, 1);
    EXPECT_EQ(read[1].number, 2);
    EXPECT_EQ(read[1].id, "volume-1");
    EXPECT_EQ(read[1].name, "data");
    EXPECT_TRUE(read[1].isDiskImage);
    EXPECT_EQ(read[1].change, 30 * MB);

    // The alert watch found the folder over its limit: its disk, not the one around it, shows it.
    AlertReading exceeded { AlertReading::State::exceeded, 80e6, now, std::nullopt, false, std::nullopt };
    ASSERT_TRUE(alerts.notify({ { folderAlert->alert.id, exceeded } }));
    read = disks.read(list);
    EXPECT_FALSE(read[0].isAlerted);
    EXPECT_TRUE(read[1].isAlerted);

    ASSERT_TRUE(alerts.add("/", SpaceAlertStore::PlaceKind::disk, { SpaceAlert::Condition::DiskUsed { 0 } }));
    EXPECT_TRUE(disks.read(list)[0].isAlerted);
}
