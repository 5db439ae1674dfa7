#include "Alerts/SpaceAlertStore.hpp"
#include "Platform/UserDefaults.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

using namespace tarnwick;
using nlohmann::json;
using Condition = SpaceAlert::Condition;
using Kind = SpaceAlertStore::PlaceKind;

namespace {

class SpaceAlertStoreTest : public ::testing::Test {
protected:
    fixtures::TempFolder folder;
    std::string path = folder / "tarnwick/defaults.json";
    UserDefaults defaults { path };
    SpaceAlertStore store { defaults };

    SpaceAlert added(std::string_view place, Kind kind, Condition condition)
    {
        auto result = store.add(place, kind, std::move(condition));
        EXPECT_TRUE(result) << (result ? "" : result.error().text());
        return result ? result->alert : SpaceAlert { {}, {}, { Condition::Size {} } };
    }
};

}

TEST_F(SpaceAlertStoreTest, SettingALimitAgainReplacesItOnlyForTheSameKindAndPeriod)
{
    SpaceAlert first = added("/home/ada/Library", Kind::folder, { Condition::Size { 30'000'000'000 } });
    auto again = store.add("/home/ada/Library/", Kind::folder, { Condition::Size { 40'000'000'000 } });
    ASSERT_TRUE(again);
    EXPECT_TRUE(again->replaced);
    EXPECT_EQ(again->alert.id, first.id);

    added("/home/ada/Library", Kind::folder, { Condition::Share { 5 } });
    added("/home/ada/Library", Kind::folder, { Condition::Growth { 10'000'000'000, "week" } });
    added("/home/ada/Library", Kind::folder, { Condition::Growth { 20'000'000'000, "month" } });
    added("/home/ada/Library", Kind::folder, { Condition::Growth { 5'000'000'000, "week" } });
    added("/home/ada/Projects", Kind::folder, { Condition::Size { 1 } });
    added("/", Kind::disk, { Condition::DiskUsed { 90 } });
    added("/", Kind::disk, { Condition::DiskUsed { 80 } });

    std::vector<Condition> conditions;
    for (const SpaceAlert& alert : store.alerts())
        conditions.push_back(alert.condition);
    EXPECT_EQ(conditions, (std::vector<Condition> {
        { Condition::Size { 40'000'000'000 } },
        { Condition::Share { 5 } },
        { Condition::Growth { 5'000'000'000, "week" } },
        { Condition::Growth { 20'000'000'000, "month" } },
        { Condition::Size { 1 } },
        { Condition::DiskUsed { 80 } },
    }));
    EXPECT_EQ(store.alerts().front().path, "/home/ada/Library");
}

TEST_F(SpaceAlertStoreTest, ConditionsMustSuitThePlace)
{
    struct Case {
        std::string_view place;
        Kind kind;
        Condition condition;
        std::string text;
    };
    const Case cases[] {
        { "/", Kind::disk, { Condition::Size { 1 } }, "A disk takes --fuller-than PERCENT." },
        { "/media/Backup", Kind::disk, { Condition::Growth { 1, "week" } }, "A disk takes --fuller-than PERCENT." },
        { "/home/ada", Kind::folder, { Condition::DiskUsed { 90 } },
            "Folder alerts measure folders and packages from snapshots. Give a folder, or use --fuller-than for a disk." },
        { "Projects", Kind::folder, { Condition::Size { 1 } }, "Give a folder or disk by its absolute path." },
        { "", Kind::folder, { Condition::Size { 1 } }, "Give a folder or disk by its absolute path." },
        { "/home/ada", Kind::folder, { Condition::Growth { 1, "3-months" } },
            "The period is one of yesterday, day-before-yesterday, week, month, 3-months, 6-months, year, all." },
    };
    for (const Case& c : cases) {
        auto result = store.add(c.place, c.kind, c.condition);
        ASSERT_FALSE(result) << c.place;
        EXPECT_EQ(result.error().text(), c.text);
    }
    EXPECT_TRUE(store.alerts().empty());
    EXPECT_FALSE(defaults.value("SpaceAlerts"));
}

TEST_F(SpaceAlertStoreTest, RemovesByFullIDShortIDOrPlace)
{
    SpaceAlert disk = added("/", Kind::disk, { Condition::DiskUsed { 90 } });
    SpaceAlert size = added("/home/ada/Library", Kind::folder, { Condition::Size { 1 } });
    SpaceAlert growth = added("/home/ada/Library", Kind::folder, { Condition::Growth { 1, "week" } });
    SpaceAlert other = added("/home/ada/Projects", Kind::folder, { Condition::Size { 1 } });
    SpaceAlert share = added("/home/ada/Projects", Kind::folder, { Condition::Share { 3 } });

    std::string lowerID = size.id;
    std::ranges::transform(lowerID, lowerID.begin(), [](unsigned char c) { return std::tolower(c); });
    std::string upperShort = share.shortID();
    std::ranges::transform(upperShort, upperShort.begin(), [](unsigned char c) { return std::toupper(c); });

    const std::pair<std::string, std::vector<SpaceAlert>> steps[] {
        { lowerID, { size } },
        { disk.shortID(), { disk } },
        { upperShort, { share } },
        { "/home/ada/Library/", { growth } },
        { "/home/ada/Projects", { other } },
    };
    for (const auto& [name, expected] : steps) {
        auto removed = store.remove(name);
        ASSERT_TRUE(removed) << name;
        EXPECT_EQ(*removed, expected) << name;
        for (const SpaceAlert& alert : expected)
            EXPECT_EQ(std::ranges::count(store.alerts(), alert), 0);
    }
    EXPECT_TRUE(store.alerts().empty());
}

TEST_F(SpaceAlertStoreTest, RemovingWhatNoAlertHasChangesNothing)
{
    SpaceAlert kept = added("/home/ada/Library", Kind::folder, { Condition::Size { 1 } });
    std::string otherShort = kept.shortID() == "00000000" ? "00000001" : "00000000";
    for (std::string name : { otherShort, otherShort + "-0000-4000-8000-000000000000", std::string("/home/ada"), std::string() }) {
        auto removed = store.remove(name);
        ASSERT_FALSE(removed) << name;
        EXPECT_EQ(removed.error().text(), "No alert has that ID or place. Run alerts for the list.");
    }
    EXPECT_EQ(store.alerts(), std::vector<SpaceAlert> { kept });
}

TEST_F(SpaceAlertStoreTest, SavesBothKeysAndReadsThemBackInAnotherProcess)
{
    SpaceAlert disk = added("/", Kind::disk, { Condition::DiskUsed { 90 } });
    SpaceAlert growth = added("/home/ada", Kind::folder, { Condition::Growth { 10'000'000'000, "dayBeforeYesterday" } });
    ASSERT_TRUE(store.notify({ { disk.id, { AlertReading::State::exceeded, 95.0 } },
        { growth.id, { AlertReading::State::exceeded, 2e10 } } }));

    json saved = json::parse(std::ifstream(path));
    EXPECT_EQ(saved["SpaceAlerts"], json::array({ disk.toJSON(), growth.toJSON() }));
    json notified = json::array({ std::min(disk.id, growth.id), std::max(disk.id, growth.id) });
    EXPECT_EQ(saved["SpaceAlertsNotified"], notified);

    UserDefaults otherDefaults(path);
    SpaceAlertStore other(otherDefaults);
    EXPECT_EQ(other.alerts(), (std::vector<SpaceAlert> { disk, growth }));
    EXPECT_EQ(other.contents().notified, (std::set<std::string> { disk.id, growth.id }));
}

TEST_F(SpaceAlertStoreTest, ReArmsAfterBelowAcrossInstancesAndOnANewLimit)
{
    SpaceAlert disk = added("/", Kind::disk, { Condition::DiskUsed { 90 } });
    auto reading = [&](AlertReading::State state) { return std::map<std::string, AlertReading> { { disk.id, { state, 1.0 } } }; };
    auto notify = [&](SpaceAlertStore& on, AlertReading::State state) {
        auto ids = on.notify(reading(state));
        EXPECT_TRUE(ids);
        return ids ? ids->size() : 99u;
    };
    UserDefaults toolDefaults(path);
    SpaceAlertStore tool(toolDefaults);

    EXPECT_EQ(notify(store, AlertReading::State::exceeded), 1u);
    EXPECT_EQ(notify(tool, AlertReading::State::exceeded), 0u); // remembered in the file
    EXPECT_EQ(notify(store, AlertReading::State::unknown), 0u);
    EXPECT_EQ(notify(store, AlertReading::State::below), 0u);
    EXPECT_EQ(notify(tool, AlertReading::State::exceeded), 1u);

    added("/", Kind::disk, { Condition::DiskUsed { 95 } });
    EXPECT_TRUE(store.contents().notified.empty());
    EXPECT_EQ(notify(store, AlertReading::State::exceeded), 1u);

    ASSERT_TRUE(tool.remove(disk.id));
    EXPECT_TRUE(store.contents().notified.empty());
    EXPECT_EQ(notify(store, AlertReading::State::exceeded), 0u); // a removed alert is not notified
}

TEST_F(SpaceAlertStoreTest, KeepsStoredAlertsItCannotReadAndReportsThem)
{
    json unreadable = { { "id", "0B5E1C2D-6F0A-4E83-9A41-2C7D8E9F1A3B" }, { "path", "/" },
        { "condition", { { "inodesUsed", { { "percent", 90 } } } } } };
    ASSERT_TRUE(defaults.set("SpaceAlerts", json::array({ unreadable })));

    SpaceAlert added = this->added("/", Kind::disk, { Condition::DiskUsed { 90 } });
    SpaceAlertStore::Contents contents = store.contents();
    EXPECT_EQ(contents.alerts, std::vector<SpaceAlert> { added });
    ASSERT_EQ(contents.problems.size(), 1u);
    EXPECT_EQ(contents.problems[0].text(), "Unknown alert condition \"inodesUsed\".");
    EXPECT_EQ(defaults.value("SpaceAlerts"), json::array({ added.toJSON(), unreadable }));

    ASSERT_TRUE(defaults.set("SpaceAlerts", "not a list"));
    EXPECT_TRUE(store.alerts().empty());
    EXPECT_EQ(store.contents().problems.size(), 1u);
}
