#include "History/HistoryTestSupport.hpp"
#include "History/HistoryThinning.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using namespace tarnwick;
using fixtures::utc;

namespace {

HistoryEntry entryAt(std::int64_t id, Date date, bool isKept = false)
{
    HistoryEntry entry;
    entry.id = id;
    entry.date = date;
    entry.isKept = isKept;
    entry.file = std::to_string(id) + ".snap";
    return entry;
}

std::vector<std::int64_t> ids(const std::vector<HistoryEntry>& entries)
{
    std::vector<std::int64_t> list;
    for (const HistoryEntry& entry : entries)
        list.push_back(entry.id);
    return list;
}

const Calendar utcCalendar = Calendar::fixed(0);

}

TEST(HistoryThinning, BucketKeysByAge)
{
    const Date now = utc(2025, 6, 15, 8); // a Sunday
    struct Case {
        Date date;
        const char* key;
    };
    const Case cases[] = {
        { utc(2025, 6, 15, 7), "d2025-06-15" },
        { utc(2025, 5, 12, 23, 59), "d2025-05-12" }, // 34 days
        { utc(2025, 5, 11, 0, 0), "w2025-19" },      // 35 days
        { utc(2024, 5, 12, 12), "w2024-19" },        // 399 days
        { utc(2024, 5, 11, 12), "m2024-05" },        // 400 days
        { utc(2020, 1, 1), "m2020-01" },
        { utc(2025, 6, 16, 1), "d2025-06-16" },      // from the future: still a day of its own
    };
    for (const Case& c : cases)
        EXPECT_EQ(HistoryThinning::bucketKey(c.date, now, utcCalendar), c.key);
}

TEST(HistoryThinning, OneEntryStaysPerBucketTheEarliest)
{
    const Date now = utc(2026, 2, 20, 12);
    std::vector<HistoryEntry> entries {
        // ISO week 2026-W01 runs from Monday 29 December 2025 to Sunday 4 January 2026 (48 to 53 days old).
        entryAt(3, utc(2026, 1, 2, 9)), entryAt(1, utc(2025, 12, 29, 9)), entryAt(2, utc(2025, 12, 31, 9)),
        entryAt(4, utc(2025, 12, 28, 9)), // a Sunday: week 52 of 2025
        // 34 and 33 days old: still a day each.
        entryAt(5, utc(2026, 1, 17, 9)), entryAt(6, utc(2026, 1, 18, 9)),
        // 35 days old: week 3 of 2026, alone in its bucket.
        entryAt(7, utc(2026, 1, 16, 9)),
        // Over 399 days: months. 31 January and 1 February 2024 fall apart; February shares.
        entryAt(8, utc(2024, 1, 31, 23)), entryAt(9, utc(2024, 2, 1, 1)), entryAt(10, utc(2024, 2, 28, 1)),
    };
    auto result = HistoryThinning::thin(entries, now, utcCalendar);
    EXPECT_EQ(ids(result.kept), (std::vector<std::int64_t> { 8, 9, 4, 1, 7, 5, 6 }));
    EXPECT_EQ(ids(result.dropped), (std::vector<std::int64_t> { 10, 2, 3 }));
}

TEST(HistoryThinning, KeptEntriesAreNeverThinnedNorHoldABucket)
{
    const Date now = utc(2025, 6, 15, 8);
    std::vector<HistoryEntry> entries {
        entryAt(1, utc(2025, 4, 7, 9), true), // Monday of week 15, kept
        entryAt(2, utc(2025, 4, 8, 9)),
        entryAt(3, utc(2025, 4, 9, 9), true),
        entryAt(4, utc(2025, 4, 10, 9)),
    };
    auto result = HistoryThinning::thin(entries, now, utcCalendar);
    EXPECT_EQ(ids(result.kept), (std::vector<std::int64_t> { 1, 2, 3 }));
    EXPECT_EQ(ids(result.dropped), (std::vector<std::int64_t> { 4 }));
}

TEST(HistoryThinning, AgeCountsCalendarDaysAcrossADaylightSavingChange)
{
    fixtures::ScopedTimeZone berlin("Europe/Berlin");
    Calendar calendar = Calendar::current();
    // 23:30 CET on Saturday 30 March 2024 and 00:10 CEST on Saturday 4 May: 35 calendar days
    // apart, though less than 34 x 24 hours.
    const Date now = utc(2024, 5, 3, 22, 10);
    EXPECT_EQ(HistoryThinning::bucketKey(utc(2024, 3, 30, 22, 30), now, calendar), "w2024-13");
    // 00:30 CET on 31 March, one hour later in UTC terms, is a Sunday, still in week 13,
    // and only 34 calendar days old.
    EXPECT_EQ(HistoryThinning::bucketKey(utc(2024, 3, 30, 23, 30), now, calendar), "d2024-03-31");

    // Two entries a local day apart across the change share no day bucket.
    const Date later = utc(2024, 4, 2, 12);
    EXPECT_EQ(HistoryThinning::bucketKey(utc(2024, 3, 30, 22, 59), later, calendar), "d2024-03-30");
    EXPECT_EQ(HistoryThinning::bucketKey(utc(2024, 3, 30, 23, 1), later, calendar), "d2024-03-31");
    // After the change, midnight is 22:00 UTC.
    EXPECT_EQ(HistoryThinning::bucketKey(utc(2024, 3, 31, 21, 59), later, calendar), "d2024-03-31");
    EXPECT_EQ(HistoryThinning::bucketKey(utc(2024, 3, 31, 22, 0), later, calendar), "d2024-04-01");
}
