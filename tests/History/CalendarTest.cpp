#include "Support/OneTransitionZone.hpp"
#include "History/Calendar.hpp"
#include "History/HistoryTestSupport.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;
using tarnwick::fixtures::OneTransitionZone;
using fixtures::utc;

namespace {


std::int64_t unixSeconds(Date date)
{
    return std::chrono::duration_cast<std::chrono::seconds>(date.time_since_epoch()).count();
}

}

TEST(Calendar, IsoWeeksAroundTheTurnOfTheYear)
{
    struct Case {
        int year;
        unsigned month, day;
        Calendar::Week week;
    };
    const Case cases[] = {
        { 2024, 12, 29, { 2024, 52 } }, // a Sunday, the last day of its week
        { 2024, 12, 30, { 2025, 1 } },  // the Monday of the week holding 2 January
        { 2025, 1, 5, { 2025, 1 } },
        { 2025, 1, 6, { 2025, 2 } },
        { 2021, 1, 3, { 2020, 53 } },   // 2020 had 53 weeks
        { 2026, 12, 31, { 2026, 53 } },
        { 2027, 1, 3, { 2026, 53 } },
        { 2027, 1, 4, { 2027, 1 } },
    };
    Calendar calendar = Calendar::fixed(0);
    for (const Case& c : cases) {
        EXPECT_EQ(calendar.week(utc(c.year, c.month, c.day, 12)), c.week) << c.year << "-" << c.month << "-" << c.day;
    }
}

TEST(Calendar, LocalDaysFollowTheOffset)
{
    Calendar east = Calendar::fixed(9 * 3600);
    Calendar west = Calendar::fixed(-5 * 3600);
    const Date instant = utc(2024, 2, 29, 20, 0); // already 1 March in Tokyo, still 29 February in New York
    EXPECT_EQ(east.localDate(instant), (Calendar::LocalDate { 2024, 3, 1 }));
    EXPECT_EQ(west.localDate(instant), (Calendar::LocalDate { 2024, 2, 29 }));
    EXPECT_EQ(east.startOfDay(instant), utc(2024, 2, 29, 15));
    EXPECT_EQ(west.startOfDay(instant), utc(2024, 2, 29, 5));
    EXPECT_TRUE(east.isSameDay(instant, utc(2024, 3, 1, 14, 59)));
    EXPECT_FALSE(east.isSameDay(instant, utc(2024, 3, 1, 15, 0)));
    EXPECT_EQ(west.daysBetween(utc(2023, 12, 31, 23), instant), 60); // 31 December local to 29 February
}

TEST(Calendar, MonthArithmeticKeepsTheTimeAndClampsTheDay)
{
    Calendar calendar = Calendar::fixed(3600);
    const Date lastOfMarch = utc(2024, 3, 31, 10, 15, 30) + std::chrono::milliseconds(250);
    EXPECT_EQ(calendar.addingMonths(lastOfMarch, -1), utc(2024, 2, 29, 10, 15, 30) + std::chrono::milliseconds(250));
    EXPECT_EQ(calendar.addingMonths(lastOfMarch, -13), utc(2023, 2, 28, 10, 15, 30) + std::chrono::milliseconds(250));
    EXPECT_EQ(calendar.addingMonths(lastOfMarch, 9), utc(2024, 12, 31, 10, 15, 30) + std::chrono::milliseconds(250));
    EXPECT_EQ(calendar.addingMonths(utc(2024, 2, 29, 12), -12), utc(2023, 2, 28, 12));
    EXPECT_EQ(calendar.addingDays(utc(2024, 3, 1, 0, 30), -1), utc(2024, 2, 29, 0, 30));
}

TEST(Calendar, DaylightSavingChangesInBerlin)
{
    fixtures::ScopedTimeZone berlin("Europe/Berlin");
    Calendar calendar = Calendar::current();
    // Clocks went from 02:00 CET to 03:00 CEST on 31 March 2024, at 01:00 UTC.
    EXPECT_EQ(calendar.startOfDay(utc(2024, 3, 31, 12)), utc(2024, 3, 30, 23));
    EXPECT_EQ(calendar.startOfDay(utc(2024, 4, 1, 12)), utc(2024, 3, 31, 22));
    EXPECT_EQ(calendar.addingDays(utc(2024, 3, 30, 11), 1), utc(2024, 3, 31, 10)); // 12:00 stays 12:00
    EXPECT_EQ(calendar.addingDays(utc(2024, 3, 30, 1, 30), 1), utc(2024, 3, 31, 1, 30)); // 02:30 is skipped: 03:30
    EXPECT_EQ(calendar.daysBetween(utc(2024, 3, 30, 22, 30), utc(2024, 5, 3, 22, 10)), 35);
    // Clocks went from 03:00 CEST back to 02:00 CET on 27 October 2024, at 01:00 UTC.
    EXPECT_EQ(calendar.addingDays(utc(2024, 10, 26, 0, 30), 1), utc(2024, 10, 27, 0, 30)); // 02:30 twice: the first
    EXPECT_EQ(calendar.addingDays(utc(2024, 10, 27, 12), -1), utc(2024, 10, 26, 11));
    EXPECT_EQ(calendar.addingMonths(utc(2024, 11, 10, 11), -1), utc(2024, 10, 10, 10));
    EXPECT_EQ(calendar.localDate(utc(2024, 10, 26, 22, 30)), (Calendar::LocalDate { 2024, 10, 27 }));
}

TEST(Calendar, DayStartsAtTheJumpWhenMidnightIsSkipped)
{
    const std::int64_t day = 19800; // local days since 1970
    const std::int64_t midnight = day * 86400;
    // Clocks jump from 23:30 to 00:30: midnight never shows, the day starts at the jump.
    OneTransitionZone skip(midnight + 3 * 3600 - 1800, -3 * 3600, -2 * 3600);
    Calendar calendar(std::make_shared<OneTransitionZone>(skip));
    const Date noon = Date(std::chrono::seconds(midnight + 14 * 3600));
    EXPECT_EQ(unixSeconds(calendar.startOfDay(noon)), midnight + 3 * 3600 - 1800);
    EXPECT_EQ(calendar.dayNumber(noon), day);
    EXPECT_EQ(calendar.dayNumber(calendar.startOfDay(noon)), day);
    EXPECT_EQ(calendar.dayNumber(calendar.startOfDay(noon) - std::chrono::seconds(1)), day - 1);
}
