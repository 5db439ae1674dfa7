#include "History/HistoryTestSupport.hpp"
#include "Metrics/HistoryMetrics.hpp"
#include "Support/TempFolder.hpp"
#include "Tarnwick/SavedScans.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <map>

using namespace tarnwick;
using namespace tarnwick::testing;
using fixtures::utc;

namespace {

using Labels = std::vector<std::pair<std::string, std::string>>;

constexpr std::int64_t GB = 1'000'000'000;

// A month of daily scans of /data on one disk that loses 20 GB a day, and two scans of a
// place with an awkward name, today only, on a second disk with steady space. Noon, June 30.
class HistoryMetricsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        store = std::move(*HistoryStore::open(folder / "History", Calendar::fixed(0), HistoryStore::defaultSizeLimit, [this] { return now; }));
        for (int day = 1; day <= 30; ++day) {
            auto tree = treeOf("/data", { { "grows/a.bin", (100 + 10 * day) * MB }, { "steady/b.bin", 50 * MB } });
            saveScan(*store, data, *tree, utc(2024, 6, day, 9), Snapshot::Volume { 1000 * GB, 900 * GB - day * 20 * GB });
        }
        // Later the same day: current.snap only, 40 MB more.
        saveScan(*store, data, *treeOf("/data", { { "grows/a.bin", 440 * MB }, { "steady/b.bin", 50 * MB } }), utc(2024, 6, 30, 11),
            Snapshot::Volume { 1000 * GB, 300 * GB });
        for (int hour : { 8, 10 })
            saveScan(*store, odd, *treeOf(odd.path, { { "x.bin", 30 * MB } }), utc(2024, 6, 30, hour), Snapshot::Volume { 500 * GB, 200 * GB });
    }

    std::map<std::string, std::map<Labels, std::int64_t>> make(std::span<const HistoryMetrics::AlertState> alerts = {})
    {
        auto mounted = [](const std::string& volume, std::span<const std::string> places) -> std::optional<MountedVolume> {
            if (volume != "vol-a" || places.empty() || places.front() != "/data")
                return std::nullopt;
            return MountedVolume { "/mnt/a", { 1000 * GB, 250 * GB, 50 * GB } };
        };
        std::map<std::string, std::map<Labels, std::int64_t>> values;
        for (const MetricFamily& family : HistoryMetrics::make(*store, alerts, mounted)) {
            EXPECT_FALSE(family.samples.empty()) << family.name;
            EXPECT_TRUE(family.name.starts_with("tarnwick_")) << family.name;
            for (const MetricFamily::Sample& sample : family.samples)
                EXPECT_TRUE(values[family.name].emplace(sample.labels, sample.value).second) << family.name << " repeats a series";
        }
        return values;
    }

    fixtures::TempFolder folder;
    Date now = utc(2024, 6, 30, 12);
    std::unique_ptr<HistoryStore> store;
    HistorySource data { "/data", "vol-a" };
    HistorySource odd { "/srv/a \"quoted\" back\\slash\nnew line \xff", "vol-b" };
};

const Labels diskA { { "mountpoint", "/mnt/a" }, { "volume", "vol-a" } };
const Labels diskB { { "mountpoint", "" }, { "volume", "vol-b" } };

}

TEST_F(HistoryMetricsTest, DisksTakeTheirSpaceFromTheMountWhileMountedElseFromTheirLatestMeasurement)
{
    auto values = make();
    EXPECT_EQ(values["tarnwick_disk_capacity_bytes"], (std::map<Labels, std::int64_t> { { diskA, 1000 * GB }, { diskB, 500 * GB } }));
    EXPECT_EQ(values["tarnwick_disk_available_bytes"], (std::map<Labels, std::int64_t> { { diskA, 250 * GB }, { diskB, 200 * GB } }));
    // The reserve is not in the volume log: only a mounted disk has one.
    EXPECT_EQ(values["tarnwick_disk_reserved_bytes"], (std::map<Labels, std::int64_t> { { diskA, 50 * GB } }));
    EXPECT_EQ(values["tarnwick_disk_history_seconds"], (std::map<Labels, std::int64_t> { { diskA, (29 * 24 + 2) * 3600 }, { diskB, 2 * 3600 } }));
}

TEST_F(HistoryMetricsTest, OnlyADiskRunningOutHasSecondsUntilFull)
{
    auto full = make()["tarnwick_disk_full_in_seconds"];
    ASSERT_EQ(full.size(), 1u);
    ASSERT_TRUE(full.contains(diskA));
    // 300 GB left at 11:00 on June 30, losing 20 GB a day: about 15 days from then.
    EXPECT_NEAR(static_cast<double>(full[diskA]), 15 * 86400.0 - 3600, 86400.0);
}

TEST_F(HistoryMetricsTest, PlacesChangeOnlyOverPeriodsTheirHistoryCovers)
{
    auto values = make();
    const Labels place { { "path", "/data" }, { "volume", "vol-a" } };
    const Labels oddPlace { { "path", odd.path }, { "volume", "vol-b" } };
    EXPECT_EQ(values["tarnwick_place_size_bytes"], (std::map<Labels, std::int64_t> { { place, 490 * MB }, { oddPlace, 30 * MB } }));
    EXPECT_EQ(values["tarnwick_place_snapshot_timestamp_seconds"][place], 1719745200); // 2024-06-30 11:00 UTC
    auto withPeriod = [&](std::string period) {
        Labels labels = place;
        labels.emplace_back("period", std::move(period));
        return labels;
    };
    // From June 29 and June 23 at 09:00 to 11:00 today; June 1 is not a month back. The odd
    // place has nothing but today.
    EXPECT_EQ(values["tarnwick_place_change_bytes"],
        (std::map<Labels, std::int64_t> { { withPeriod("yesterday"), 490 * MB - 440 * MB }, { withPeriod("week"), 490 * MB - 380 * MB } }));
}

TEST_F(HistoryMetricsTest, ADamagedLatestSnapshotGivesWayToTheNewestIntactOne)
{
    auto record = store->record(data);
    ASSERT_TRUE(record && record->current);
    std::ofstream(folder / ("History/" + record->folder + "/" + record->current->file), std::ios::trunc) << "TSNP\x07garbage";
    auto values = make();
    const Labels place { { "path", "/data" }, { "volume", "vol-a" } };
    EXPECT_EQ(values["tarnwick_place_size_bytes"][place], 450 * MB);
    EXPECT_EQ(values["tarnwick_place_snapshot_timestamp_seconds"][place], 1719738000); // 09:00, the day snapshot
}

TEST_F(HistoryMetricsTest, AlertsReadExceededOrNotAndUnknownOnesAreLeftOut)
{
    auto alert = [](std::string id, AlertReading::State state) {
        return HistoryMetrics::AlertState { SpaceAlert { std::move(id), "/data", SpaceAlert::Condition { SpaceAlert::Condition::Size { GB } } },
            AlertReading { state, std::nullopt, std::nullopt, std::nullopt, false, std::nullopt } };
    };
    const std::vector<HistoryMetrics::AlertState> alerts {
        alert("A1", AlertReading::State::exceeded),
        alert("B2", AlertReading::State::below),
        alert("C3", AlertReading::State::unknown),
    };
    EXPECT_EQ(make(alerts)["tarnwick_alert_exceeded"], (std::map<Labels, std::int64_t> {
                                                          { { { "alert_id", "A1" }, { "path", "/data" } }, 1 },
                                                          { { { "alert_id", "B2" }, { "path", "/data" } }, 0 },
                                                      }));
}

TEST(HistoryMetrics, AnEmptyHistoryHasNoFamilies)
{
    fixtures::TempFolder folder;
    auto store = HistoryStore::open(folder / "History", Calendar::fixed(0), HistoryStore::defaultSizeLimit, [] { return utc(2024, 6, 30); });
    ASSERT_TRUE(store);
    EXPECT_TRUE(HistoryMetrics::make(**store, {}, MountedVolume::find).empty());
}
