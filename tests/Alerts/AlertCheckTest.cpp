#include "Alerts/AlertCheck.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;
using Condition = SpaceAlert::Condition;
using State = AlertReading::State;

namespace {

const Date now = Date {} + std::chrono::seconds(1'800'000'000);
const Date snapshotDate = now - std::chrono::hours(3);
const Date weekAgo = now - std::chrono::days(7);

AlertCheck::Folder folder(std::int64_t size, std::optional<std::int64_t> capacity = std::nullopt,
    std::optional<AlertCheck::Growth> growth = std::nullopt)
{
    return { snapshotDate, size, capacity, growth };
}

}

TEST(AlertCheck, DiskReadingsAtTheEdgesOfTheLimit)
{
    struct Case {
        int percent;
        std::int64_t total;
        std::int64_t available;
        State state;
        double value;
    };
    const Case cases[] {
        { 90, 1000, 100, State::below, 90.0 }, // exactly at the limit
        { 90, 1000, 99, State::exceeded, 90.1 },
        { 90, 1000, 1000, State::below, 0.0 },
        { 99, 1000, 0, State::exceeded, 100.0 },
        // Too close for a double to tell apart from the limit: counted in whole bytes.
        { 90, 9'000'000'000'000'000'000, 900'000'000'000'000'000, State::below, 90.0 },
        { 90, 9'000'000'000'000'000'000, 899'999'999'999'999'999, State::exceeded, 90.0 },
    };
    for (const Case& c : cases) {
        AlertReading reading = AlertCheck::readDisk({ c.percent }, AlertCheck::Disk { c.total, c.available }, now);
        EXPECT_EQ(reading.state, c.state) << c.total << " " << c.available;
        EXPECT_DOUBLE_EQ(reading.value.value_or(-1), c.value);
        EXPECT_EQ(reading.measuredAt, now);
        EXPECT_FALSE(reading.since);
        EXPECT_EQ(reading.note(), "");
    }
    AlertReading unmounted = AlertCheck::readDisk({ 90 }, std::nullopt, now);
    EXPECT_EQ(unmounted.state, State::unknown);
    EXPECT_FALSE(unmounted.value);
    EXPECT_EQ(unmounted.note(), "The disk isn't mounted");
}

TEST(AlertCheck, FolderSizeAndShareReadings)
{
    struct Case {
        Condition condition;
        AlertCheck::Folder folder;
        State state;
        double value;
    };
    const Case cases[] {
        { { Condition::Size { 30'000'000'000 } }, folder(30'000'000'000), State::below, 30e9 },
        { { Condition::Size { 30'000'000'000 } }, folder(30'000'000'001), State::exceeded, 30'000'000'001.0 },
        { { Condition::Share { 5 } }, folder(50'000'000'000, 1'000'000'000'000), State::below, 5.0 },
        { { Condition::Share { 5 } }, folder(50'000'000'001, 1'000'000'000'000), State::exceeded, 5.0000000001 },
        { { Condition::Share { 5 } }, folder(0, 1'000'000'000'000), State::below, 0.0 },
    };
    for (const Case& c : cases) {
        AlertReading reading = AlertCheck::readFolder(c.condition, c.folder);
        EXPECT_EQ(reading.state, c.state) << c.condition.toJSON().dump() << " at " << c.folder.size;
        EXPECT_DOUBLE_EQ(reading.value.value_or(-1), c.value);
        EXPECT_EQ(reading.measuredAt, snapshotDate);
        EXPECT_FALSE(reading.uncertain);
    }
}

TEST(AlertCheck, FolderGrowthCarriesItsStartAndUncertainty)
{
    Condition weekGrowth { Condition::Growth { 10'000'000'000, "week" } };
    struct Case {
        AlertCheck::Growth growth;
        State state;
        std::string note;
    };
    const Case cases[] {
        { { 10'000'000'000, false, weekAgo }, State::below, "" },
        { { 10'000'000'001, false, weekAgo }, State::exceeded, "" },
        { { 12'000'000'000, true, weekAgo }, State::exceeded, ", uncertain: one of the scans didn't read the folder fully" },
        { { -40'000'000'000, false, weekAgo }, State::below, "" },
    };
    for (const Case& c : cases) {
        AlertReading reading = AlertCheck::readFolder(weekGrowth, folder(50'000'000'000, std::nullopt, c.growth));
        EXPECT_EQ(reading.state, c.state) << c.growth.change;
        EXPECT_DOUBLE_EQ(reading.value.value_or(0), static_cast<double>(c.growth.change));
        EXPECT_EQ(reading.since, weekAgo);
        EXPECT_EQ(reading.note(), c.note);
    }
}

TEST(AlertCheck, FoldersNoSnapshotKeepsReadUnknown)
{
    const std::string notMeasured = "Not measured yet: it is measured with the next snapshot of its disk";
    const Condition conditions[] {
        { Condition::Size { 1 } }, { Condition::Share { 1 } }, { Condition::Growth { 1, "yesterday" } },
    };
    for (const Condition& condition : conditions) {
        AlertReading reading = AlertCheck::readFolder(condition, std::nullopt);
        EXPECT_EQ(reading.state, State::unknown);
        EXPECT_EQ(reading.note(), notMeasured);
    }
    // Kept by the snapshot, but nothing to count the growth or the share from.
    EXPECT_EQ(AlertCheck::readFolder(conditions[2], folder(20'000'000)).note(), notMeasured);
    AlertReading noCapacity = AlertCheck::readFolder(conditions[1], folder(20'000'000));
    EXPECT_EQ(noCapacity.state, State::unknown);
    EXPECT_EQ(noCapacity.unknownReason, AlertReading::Unknown::capacityUnknown);
}

TEST(AlertCheck, NotifiesOnceWhenPassedAndAgainOnlyAfterBelow)
{
    AlertReading exceeded { State::exceeded, 95.0 };
    AlertReading below { State::below, 50.0 };
    AlertReading unknown = AlertReading::unknown(AlertReading::Unknown::diskNotMounted);

    struct Step {
        AlertReading reading;
        bool notifies;
    };
    const Step steps[] {
        { exceeded, true }, { exceeded, false }, { unknown, false }, { exceeded, false },
        { below, false }, { unknown, false }, { exceeded, true }, { exceeded, false },
    };
    std::set<std::string> notified;
    int count = 0;
    for (const Step& step : steps) {
        auto result = AlertCheck::notifications({ { "A", step.reading } }, notified);
        EXPECT_EQ(result.toNotify.size(), step.notifies ? 1u : 0u) << "step " << count;
        notified = result.notified;
        ++count;
    }
}

TEST(AlertCheck, NotificationsLeaveAlertsWithoutAReadingAlone)
{
    AlertReading exceeded { State::exceeded, 95.0 };
    auto result = AlertCheck::notifications(
        { { "C", exceeded }, { "A", exceeded }, { "B", { State::below, 1.0 } } }, { "B", "D" });
    EXPECT_EQ(result.toNotify, (std::vector<std::string> { "A", "C" }));
    EXPECT_EQ(result.notified, (std::set<std::string> { "A", "C", "D" }));
}
