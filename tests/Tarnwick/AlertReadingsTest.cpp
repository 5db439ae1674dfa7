#include "AlertReadings.hpp"
#include "History/HistoryStore.hpp"
#include "History/HistoryTestSupport.hpp"
#include "SavedScans.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;
using namespace tarnwick::testing;
using Condition = SpaceAlert::Condition;
using State = AlertReading::State;

namespace {

// A disk mounted at /data with a snapshot of four days ago and one of now; a folder Projects
// inside it grew from 30 MB to 80 MB.
class AlertReadingsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        store = std::move(*HistoryStore::open(folder / "History"));
        Snapshot::Volume volume { 1000 * MB, 400 * MB };
        saveScan(*store, disk.source, *treeOf("/data", { { "Projects/a", 30 * MB }, { "Media/b", 200 * MB } }), now - std::chrono::hours(96), volume);
        saveScan(*store, disk.source, *treeOf("/data", { { "Projects/a", 80 * MB }, { "Media/b", 200 * MB } }), now, volume);
    }

    SpaceAlert alert(std::string path, Condition condition)
    {
        return SpaceAlert { SpaceAlert::newID(), std::move(path), std::move(condition) };
    }

    fixtures::TempFolder folder;
    Date now = std::chrono::system_clock::now();
    std::unique_ptr<HistoryStore> store;
    AlertReadings::Disk disk { "/data", { "/data", "volume-1" } };
    std::vector<AlertReadings::Disk> disks { { "/", { "/", "root" } }, disk };
};

}

TEST_F(AlertReadingsTest, FoldersAreReadFromTheLatestSnapshotOfTheirDisk)
{
    struct Case {
        Condition condition;
        State state;
        double value;
    };
    const Case cases[] {
        { { Condition::Size { 50 * MB } }, State::exceeded, 80e6 },
        { { Condition::Size { 80 * MB } }, State::below, 80e6 }, // at the limit is not above it
        { { Condition::Share { 5 } }, State::exceeded, 8.0 },     // of the capacity kept with the snapshot
        { { Condition::Growth { 40 * MB, "week" } }, State::exceeded, 50e6 },
        { { Condition::Growth { 60 * MB, "all" } }, State::below, 50e6 },
    };
    for (const Case& c : cases) {
        SpaceAlert projects = alert("/data/Projects", c.condition);
        auto readings = AlertReadings::read({ projects }, disks, store.get());
        const AlertReading& reading = readings.at(projects.id);
        EXPECT_EQ(reading.state, c.state) << c.condition.caseName();
        EXPECT_DOUBLE_EQ(reading.value.value_or(-1), c.value) << c.condition.caseName();
    }
    SpaceAlert growth = alert("/data/Projects", { Condition::Growth { 1, "week" } });
    EXPECT_TRUE(AlertReadings::read({ growth }, disks, store.get()).at(growth.id).since);
}

TEST_F(AlertReadingsTest, WhatIsNotMeasuredReadsUnknown)
{
    std::vector<SpaceAlert> alerts {
        alert("/data/Projects/small", { Condition::Size { MB } }), // under 10 MB: no snapshot keeps it
        alert("/home/ann", { Condition::Size { MB } }),            // its disk has no snapshot
        alert("/mnt/gone", { Condition::DiskUsed { 90 } }),        // not mounted
    };
    auto readings = AlertReadings::read(alerts, disks, store.get());
    EXPECT_EQ(readings.at(alerts[0].id).unknownReason, AlertReading::Unknown::notMeasuredYet);
    EXPECT_EQ(readings.at(alerts[1].id).unknownReason, AlertReading::Unknown::notMeasuredYet);
    EXPECT_EQ(readings.at(alerts[2].id).unknownReason, AlertReading::Unknown::diskNotMounted);
    // Without a history nothing of a folder is known.
    SpaceAlert projects = alert("/data/Projects", { Condition::Size { MB } });
    EXPECT_EQ(AlertReadings::read({ projects }, disks, nullptr).at(projects.id).state, State::unknown);
}

TEST(AlertReadings, TheDiskThatHoldsAPlaceMostClosely)
{
    std::vector<AlertReadings::Disk> disks { { "/", {} }, { "/data", {} }, { "/data/archive", {} } };
    struct Case {
        std::string path;
        std::string disk;
    };
    const Case cases[] { { "/data/archive/2020", "/data/archive" }, { "/data/archivist", "/data" }, { "/data", "/data" }, { "/etc", "/" } };
    for (const Case& c : cases)
        EXPECT_EQ(AlertReadings::holding(disks, c.path).value().mountPoint, c.disk) << c.path;
    EXPECT_FALSE(AlertReadings::holding({ { "/data", {} } }, "/etc"));
}
