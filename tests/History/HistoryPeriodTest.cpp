#include "History/HistoryPeriod.hpp"
#include "History/HistoryTestSupport.hpp"

#include <gtest/gtest.h>

#include <vector>

using namespace tarnwick;
using fixtures::utc;

namespace {

HistoryEntry dayEntry(std::int64_t id, Date date)
{
    HistoryEntry entry;
    entry.id = id;
    entry.date = date;
    entry.file = std::to_string(id) + ".snap";
    return entry;
}

// Entries are given in UTC; the calendar is UTC+1 so that local midnight is 23:00 UTC.
const Calendar plusOne = Calendar::fixed(3600);

std::optional<std::int64_t> startID(HistoryPeriod period, const std::vector<HistoryEntry>& entries, Date now)
{
    auto entry = period.startEntry(entries, now, plusOne);
    return entry ? std::optional(entry->id) : std::nullopt;
}

}

TEST(HistoryPeriod, RawValuesInOrder)
{
    const char* expected[] = { "yesterday", "dayBeforeYesterday", "week", "month", "threeMonths", "sixMonths", "year", "all" };
    ASSERT_EQ(allHistoryPeriods.size(), std::size(expected));
    for (std::size_t k = 0; k < allHistoryPeriods.size(); ++k) {
        EXPECT_EQ(allHistoryPeriods[k].rawValue(), expected[k]);
        EXPECT_EQ(HistoryPeriod::fromRawValue(expected[k]), allHistoryPeriods[k]);
    }
    EXPECT_FALSE(HistoryPeriod::fromRawValue("Week"));
    EXPECT_FALSE(HistoryPeriod::fromRawValue(""));
    EXPECT_EQ(HistoryPeriod(), HistoryPeriod::yesterday);
}

TEST(HistoryPeriod, DayCasesCountFromTheStartOfTodayStrictly)
{
    const Date now = utc(2024, 5, 14, 23, 30); // 00:30 on 15 May, local
    const Date lastEvening = utc(2024, 5, 14, 22, 50); // 23:50 on 14 May
    const Date thisMorning = utc(2024, 5, 14, 23, 10); // 00:10 on 15 May
    const Date midnight = utc(2024, 5, 14, 23, 0);

    EXPECT_TRUE(HistoryPeriod(HistoryPeriod::yesterday).reachesBack(lastEvening, now, plusOne));
    EXPECT_FALSE(HistoryPeriod(HistoryPeriod::yesterday).reachesBack(thisMorning, now, plusOne));
    EXPECT_FALSE(HistoryPeriod(HistoryPeriod::yesterday).reachesBack(midnight, now, plusOne));
    EXPECT_TRUE(HistoryPeriod(HistoryPeriod::yesterday).reachesBack(midnight - std::chrono::seconds(1), now, plusOne));

    EXPECT_FALSE(HistoryPeriod(HistoryPeriod::dayBeforeYesterday).reachesBack(lastEvening, now, plusOne));
    EXPECT_FALSE(HistoryPeriod(HistoryPeriod::dayBeforeYesterday).reachesBack(utc(2024, 5, 13, 23, 0), now, plusOne));
    EXPECT_TRUE(HistoryPeriod(HistoryPeriod::dayBeforeYesterday).reachesBack(utc(2024, 5, 13, 22, 59, 59), now, plusOne));

    std::vector<HistoryEntry> entries { dayEntry(1, utc(2024, 5, 10, 12)), dayEntry(2, lastEvening), dayEntry(3, thisMorning) };
    EXPECT_EQ(startID(HistoryPeriod::yesterday, entries, now), 2);
    EXPECT_EQ(startID(HistoryPeriod::dayBeforeYesterday, entries, now), 1);
}

TEST(HistoryPeriod, CalendarCasesCountFromNowInclusively)
{
    const Date now = utc(2024, 3, 31, 9, 41, 7);
    const std::chrono::seconds second(1);
    struct Case {
        HistoryPeriod period;
        Date start; // the latest date that still passes
    };
    const Case cases[] = {
        { HistoryPeriod::week, utc(2024, 3, 24, 9, 41, 7) },
        { HistoryPeriod::month, utc(2024, 2, 29, 9, 41, 7) }, // 31 March less a month: the last of February
        { HistoryPeriod::threeMonths, utc(2023, 12, 31, 9, 41, 7) },
        { HistoryPeriod::sixMonths, utc(2023, 9, 30, 9, 41, 7) },
        { HistoryPeriod::year, utc(2023, 3, 31, 9, 41, 7) },
    };
    for (const Case& c : cases) {
        EXPECT_TRUE(c.period.reachesBack(c.start, now, plusOne)) << c.period.rawValue();
        EXPECT_FALSE(c.period.reachesBack(c.start + second, now, plusOne)) << c.period.rawValue();
    }
    EXPECT_TRUE(HistoryPeriod(HistoryPeriod::all).reachesBack(now, now, plusOne));
}

TEST(HistoryPeriod, StartEntryIsTheLatestPassingOrElseTheEarliest)
{
    const Date now = utc(2024, 6, 20, 15);
    // A history that starts 3 days ago, given out of order.
    std::vector<HistoryEntry> shortHistory {
        dayEntry(12, utc(2024, 6, 19, 8)), dayEntry(10, utc(2024, 6, 17, 20)), dayEntry(11, utc(2024, 6, 18, 9)),
    };
    EXPECT_EQ(startID(HistoryPeriod::month, shortHistory, now), 10);
    EXPECT_EQ(startID(HistoryPeriod::year, shortHistory, now), 10);
    EXPECT_EQ(startID(HistoryPeriod::yesterday, shortHistory, now), 12);
    EXPECT_EQ(startID(HistoryPeriod::dayBeforeYesterday, shortHistory, now), 11);

    std::vector<HistoryEntry> longHistory {
        dayEntry(1, utc(2023, 1, 5, 12)), dayEntry(2, utc(2024, 5, 1, 12)), dayEntry(3, utc(2024, 6, 13, 15)),
        dayEntry(4, utc(2024, 6, 13, 15, 0, 1)), dayEntry(5, utc(2024, 6, 20, 9)),
    };
    EXPECT_EQ(startID(HistoryPeriod::week, longHistory, now), 3); // exactly 7 days before now passes
    EXPECT_EQ(startID(HistoryPeriod::month, longHistory, now), 2);
    EXPECT_EQ(startID(HistoryPeriod::year, longHistory, now), 1);
    EXPECT_EQ(startID(HistoryPeriod::yesterday, longHistory, now), 4);
    EXPECT_EQ(startID(HistoryPeriod::all, longHistory, now), 1);
    EXPECT_EQ(startID(HistoryPeriod::all, shortHistory, now), 10);

    EXPECT_FALSE(startID(HistoryPeriod::all, {}, now));
    EXPECT_FALSE(startID(HistoryPeriod::week, {}, now));
}
