#include "DailyScans.hpp"
#include "DiskSnapshot.hpp"
#include "History/HistoryStore.hpp"
#include "History/HistoryTestSupport.hpp"
#include "Platform/LoginItem.hpp"
#include "Platform/UserDefaults.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace tarnwick;
using Outcome = DailyScans::Outcome;
using fixtures::utc;

namespace {

// A history with a clock the test moves, two disks, and a scan that saves a small snapshot
// of the disk it is given.
class DailyScansTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        store = std::move(*HistoryStore::open(folder / "History", Calendar::fixed(0), HistoryStore::defaultSizeLimit, [this] { return now.load(); }));
        defaults = std::make_unique<UserDefaults>(folder / "config/defaults.json");
    }

    DailyScans::Services services()
    {
        return DailyScans::Services {
            *defaults,
            *store,
            [this] { return disks; },
            [this] { return power; },
            [this](const HistorySource& disk, const DailyScans::ShouldDefer&) {
                scanned.push_back(disk.path);
                HistoryStore::SnapshotFiles files;
                files.date = now.load();
                files.total = 1000;
                files.current = { 1, 2, 3 };
                files.day = { 1, 2, 3 };
                auto saved = store->save(disk, files);
                return DailyScans::DiskOutcome { disk, saved ? Outcome::saved : Outcome::failed, {} };
            },
            folder / "config/autostart/tarnwick.desktop",
            "/opt/tarnwick/bin/tarnwick",
        };
    }

    std::vector<Outcome> outcomes(const DailyScans::Pass& pass)
    {
        std::vector<Outcome> list;
        for (const auto& outcome : pass.outcomes)
            list.push_back(outcome.outcome);
        return list;
    }

    fixtures::TempFolder folder;
    std::atomic<Date> now { utc(2024, 6, 1, 10) };
    std::unique_ptr<HistoryStore> store;
    std::unique_ptr<UserDefaults> defaults;
    std::vector<HistorySource> disks { { "/", "root-uuid" }, { "/mnt/backup", "dev:8:17" } };
    PowerState power;
    std::vector<std::string> scanned;
    DailyScans::ShouldDefer never = [] { return false; };
};

}

TEST_F(DailyScansTest, ASecondPassOnTheSameDayScansNothingAlreadyTaken)
{
    DailyScans daily(services());
    EXPECT_EQ(outcomes(daily.run(DailyScans::Mode::daily, never)), (std::vector { Outcome::saved, Outcome::saved }));
    EXPECT_EQ(scanned, (std::vector<std::string> { "/", "/mnt/backup" }));

    now = utc(2024, 6, 1, 23, 59);
    scanned.clear();
    EXPECT_EQ(outcomes(daily.run(DailyScans::Mode::daily, never)), (std::vector { Outcome::alreadyTaken, Outcome::alreadyTaken }));
    EXPECT_TRUE(scanned.empty());

    // A new disk, and a new day for the others.
    disks.push_back({ "/media/stick", "dev:8:33" });
    now = utc(2024, 6, 2, 0, 1);
    EXPECT_EQ(outcomes(daily.run(DailyScans::Mode::daily, never)), (std::vector { Outcome::saved, Outcome::saved, Outcome::saved }));
    EXPECT_EQ(scanned.size(), 3u);
}

TEST_F(DailyScansTest, LowPowerAndHeatDeferTheWholePass)
{
    struct Case {
        const char* what;
        PowerState power;
        bool defers;
    };
    const Case cases[] {
        { "on battery at 15 %", { true, 15, PowerState::Thermal::nominal }, true },
        { "on battery at 80 %", { true, 80, PowerState::Thermal::nominal }, false },
        { "on mains, battery low", { false, 5, PowerState::Thermal::nominal }, false },
        { "thermal fair", { false, std::nullopt, PowerState::Thermal::fair }, false },
        { "thermal serious", { false, std::nullopt, PowerState::Thermal::serious }, true },
        { "thermal critical", { false, std::nullopt, PowerState::Thermal::critical }, true },
    };
    for (const Case& c : cases) {
        ASSERT_TRUE(store->clear());
        power = c.power;
        scanned.clear();
        DailyScans daily(services());
        DailyScans::Pass pass = daily.run(DailyScans::Mode::daily, never);
        Outcome expected = c.defers ? Outcome::deferred : Outcome::saved;
        EXPECT_EQ(outcomes(pass), (std::vector { expected, expected })) << c.what;
        EXPECT_EQ(scanned.size(), c.defers ? 0u : 2u) << c.what;
        // The pass is remembered either way.
        EXPECT_EQ(daily.lastPass(), pass) << c.what;
    }
}

TEST_F(DailyScansTest, ADeferTestThatTurnsDefersTheRest)
{
    DailyScans daily(services());
    int asked = 0;
    DailyScans::Pass pass = daily.run(DailyScans::Mode::daily, [&] { return ++asked > 1; });
    EXPECT_EQ(outcomes(pass), (std::vector { Outcome::saved, Outcome::deferred }));
}

TEST_F(DailyScansTest, ASnapshotNowTakesEveryDiskWhateverThePower)
{
    DailyScans daily(services());
    daily.run(DailyScans::Mode::daily, never);
    power = PowerState { true, 3, PowerState::Thermal::critical };
    scanned.clear();
    DailyScans::Pass pass = daily.run(DailyScans::Mode::now, never);
    EXPECT_EQ(outcomes(pass), (std::vector { Outcome::saved, Outcome::saved }));

    // And on a thread of its own, reporting when it is done.
    scanned.clear();
    std::atomic<int> changes = 0;
    daily.addObserver([&] { ++changes; });
    ASSERT_TRUE(daily.takeSnapshotNow());
    for (int i = 0; i < 2000 && (daily.progress().running || scanned.size() < 2); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_FALSE(daily.progress().running);
    EXPECT_EQ(scanned.size(), 2u);
    EXPECT_GE(changes.load(), 2);
}

TEST_F(DailyScansTest, TheSwitchRegistersTheLoginItemAndShowsTheTrayItem)
{
    std::string entry = folder / "config/autostart/tarnwick.desktop";
    {
        DailyScans daily(services());
        EXPECT_FALSE(daily.isEnabled());
        ASSERT_TRUE(daily.turnOn());
        EXPECT_TRUE(daily.isEnabled());
        EXPECT_TRUE(daily.isScheduled());
        EXPECT_TRUE(LoginItem::isInstalled(entry));
        EXPECT_EQ(defaults->value("MenuBarItemShown"), true);
        EXPECT_EQ(defaults->value("DailyScansShowsMenuBarItem"), true);
    }
    // The next start of the app schedules it again.
    DailyScans daily(services());
    EXPECT_FALSE(daily.isScheduled());
    daily.startIfEnabled();
    EXPECT_TRUE(daily.isScheduled());

    ASSERT_TRUE(daily.turnOff());
    EXPECT_FALSE(daily.isEnabled());
    EXPECT_FALSE(daily.isScheduled());
    EXPECT_FALSE(LoginItem::isInstalled(entry));
    EXPECT_EQ(defaults->value("DailyScansEnabled"), false);
    EXPECT_EQ(defaults->value("MenuBarItemShown"), false);
    EXPECT_EQ(defaults->value("DailyScansShowsMenuBarItem"), false);
}

TEST_F(DailyScansTest, ATrayItemTheUserShowedStaysWhenTheSwitchGoesOff)
{
    ASSERT_TRUE(defaults->set("MenuBarItemShown", true));
    DailyScans daily(services());
    ASSERT_TRUE(daily.turnOn());
    EXPECT_FALSE(defaults->value("DailyScansShowsMenuBarItem"));
    ASSERT_TRUE(daily.turnOff());
    EXPECT_EQ(defaults->value("MenuBarItemShown"), true);
}

TEST_F(DailyScansTest, TurningOnFailsWithTheReasonWhenTheLoginItemCannotBeWritten)
{
    folder.makeFile("config/autostart", 10); // a file where the folder should be
    DailyScans daily(services());
    auto turned = daily.turnOn();
    ASSERT_FALSE(turned);
    EXPECT_TRUE(turned.error().starts_with("Tarnwick couldn't be set to open at login: ")) << turned.error();
    EXPECT_FALSE(daily.isEnabled());
    EXPECT_FALSE(daily.isScheduled());
}

TEST_F(DailyScansTest, TheSchedulerRunsPassesByItself)
{
    DailyScans::Services fast = services();
    fast.interval = std::chrono::milliseconds(5);
    fast.tolerance = std::chrono::milliseconds(0); // the timer slack would let it sleep that long
    DailyScans daily(fast);
    ASSERT_TRUE(daily.turnOn());
    for (int i = 0; i < 4000 && !daily.lastPass(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    ASSERT_TRUE(daily.lastPass());
    ASSERT_TRUE(daily.turnOff());
    // Passes after the first found today's snapshots and scanned nothing again.
    EXPECT_EQ(scanned.size(), 2u);
}

TEST(DailyScansPass, RemembersItsOutcomesAsJSON)
{
    DailyScans::Pass pass { utc(2024, 6, 1, 8, 13, 22),
        { { { "/", "root-uuid" }, Outcome::saved, "" }, { { "/mnt/b", "dev:8:17" }, Outcome::failed, "The disk isn't there." } } };
    nlohmann::json json = pass.toJSON();
    EXPECT_EQ(json["identity"], "2024-06-01T08:13:22Z");
    EXPECT_EQ(json["outcomes"][1]["outcome"], "failed");
    EXPECT_EQ(json["outcomes"][1]["disk"], "/mnt/b");
    EXPECT_EQ(DailyScans::Pass::fromJSON(json), pass);

    for (const char* bad : { R"({"identity": "yesterday", "outcomes": []})", R"({"identity": "2024-06-01T08:13:22Z"})",
             R"({"identity": "2024-06-01T08:13:22Z", "outcomes": [{"disk": "/", "volume": "v", "outcome": "lost", "detail": ""}]})",
             R"([])" })
        EXPECT_FALSE(DailyScans::Pass::fromJSON(nlohmann::json::parse(bad))) << bad;
}

TEST(DiskSnapshot, ScansAFolderAndSavesItIntoTheHistory)
{
    fixtures::TempFolder folder;
    folder.makeFile("place/Videos/trip.bin", 12'000'000);
    auto store = HistoryStore::open(folder / "History");
    ASSERT_TRUE(store);
    HistorySource place { folder / "place", "" };
    DailyScans::DiskOutcome deferred = DiskSnapshot::take(**store, place, [] { return true; });
    EXPECT_EQ(deferred.outcome, Outcome::deferred);
    EXPECT_TRUE((*store)->sources().empty());

    std::vector<HistorySource> saved;
    DailyScans::ScanRunner runner = DiskSnapshot::runner(**store, [&](const HistorySource& source) { saved.push_back(source); });
    DailyScans::DiskOutcome outcome = runner(place, [] { return false; });
    ASSERT_EQ(outcome.outcome, Outcome::saved) << outcome.detail;
    ASSERT_EQ(saved.size(), 1u);
    EXPECT_EQ(saved[0], outcome.disk);
    auto record = (*store)->record(outcome.disk);
    ASSERT_TRUE(record);
    ASSERT_TRUE(record->current);
    EXPECT_GE(record->current->total, 12'000'000);
    EXPECT_EQ(record->entries.size(), 1u);

    DailyScans::DiskOutcome missing = DiskSnapshot::take(**store, { folder / "gone", "" }, [] { return false; });
    EXPECT_EQ(missing.outcome, Outcome::failed);
    EXPECT_FALSE(missing.detail.empty());
}
