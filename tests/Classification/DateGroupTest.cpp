#include "Support/OneTransitionZone.hpp"
#include "Classification/DateGroup.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;
using tarnwick::fixtures::OneTransitionZone;

namespace {

constexpr std::int64_t reference = TreeDate::referenceUnixSeconds;

Date at(std::int64_t unixSeconds) { return Date(std::chrono::seconds(unixSeconds)); }


}

TEST(DateGroup, BoundariesByCalendarArithmetic)
{
    struct Case {
        const char* what;
        std::int64_t now;
        std::int64_t offset;
        std::array<std::int64_t, 4> starts; // unix seconds
    };
    const Case cases[] = {
        { "UTC, a leap year's March", 1709294400, 0, { 1709251200, 1708646400, 1706659200, 1677628800 } },
        { "UTC+9, already the next day", 1709323200, 9 * 3600, { 1709305200, 1708700400, 1706713200, 1677682800 } },
        { "UTC-5, still 29 February", 1709258400, -5 * 3600, { 1709182800, 1708578000, 1706590800, 1677560400 } },
    };
    for (const Case& c : cases) {
        FixedTimeZone zone(c.offset);
        auto boundaries = DateGroup::Boundaries::make(at(c.now), zone);
        for (std::size_t k = 0; k < 4; ++k) {
            EXPECT_EQ(boundaries.dates[k], at(c.starts[k])) << c.what << " " << k;
            EXPECT_EQ(boundaries.seconds[k], c.starts[k] - reference) << c.what << " " << k;
            EXPECT_EQ(boundaries.days[k] * 86400, c.starts[k] + c.offset - reference) << c.what << " " << k;
        }
        EXPECT_TRUE(boundaries.isCurrent(at(c.now), zone));
        EXPECT_FALSE(boundaries.isCurrent(at(c.starts[0] + 86400), zone));
        EXPECT_TRUE(boundaries.isCurrent(at(c.starts[0] + 86399), zone));
    }
}

TEST(DateGroup, BoundariesAcrossDaylightSavingChanges)
{
    const std::int64_t day = 19800; // a local day number (days since 1970)
    const std::int64_t midnight = day * 86400;

    // Clocks jump from 00:00 to 01:00: the day starts at the jump.
    OneTransitionZone springForward(midnight + 3 * 3600, -3 * 3600, -2 * 3600);
    auto skipped = DateGroup::Boundaries::make(at(midnight + 12 * 3600), springForward);
    EXPECT_EQ(skipped.dates[0], at(midnight + 3 * 3600));
    EXPECT_EQ(skipped.days[0], day - reference / 86400);
    EXPECT_EQ(skipped.dates[1], at(midnight - 7 * 86400 + 3 * 3600));

    // Clocks fall back from 01:00 to 00:00: midnight happens twice and the first one counts.
    OneTransitionZone fallBack(midnight + 3 * 3600, -2 * 3600, -3 * 3600);
    auto repeated = DateGroup::Boundaries::make(at(midnight + 12 * 3600), fallBack);
    EXPECT_EQ(repeated.dates[0], at(midnight + 2 * 3600));
    EXPECT_EQ(repeated.days[0], day - reference / 86400);
    // Days before the change are a whole day apart in the earlier offset.
    EXPECT_EQ(repeated.dates[1], at(midnight - 7 * 86400 + 2 * 3600));
}

TEST(DateGroup, GroupOfAStoredDate)
{
    auto boundaries = DateGroup::Boundaries::make(at(1709294400), FixedTimeZone(0));
    struct Case {
        std::int64_t unixSeconds;
        std::optional<DateGroup> group;
    };
    const Case cases[] = {
        { 1709294400 + 3600, DateGroup::today },   // later today, or in the future
        { 1709251200, DateGroup::today },          // the first second of today
        { 1709251199, DateGroup::past7Days },
        { 1708646400, DateGroup::past7Days },
        { 1708646399, DateGroup::past30Days },
        { 1706659200, DateGroup::past30Days },
        { 1706659199, DateGroup::pastYear },
        { 1677628800, DateGroup::pastYear },
        { 1677628799, DateGroup::older },
        { reference - 1'000'000'000, DateGroup::older },
    };
    for (const Case& c : cases)
        EXPECT_EQ(boundaries.group(static_cast<std::int32_t>(c.unixSeconds - reference)), c.group) << c.unixSeconds;
    EXPECT_EQ(boundaries.group(TreeDate::noDate), std::nullopt);
}

