#pragma once

#include "History/Calendar.hpp"
#include "History/HistoryEntry.hpp"

#include <span>
#include <string>
#include <vector>

// Which day snapshots of a place stay as they age: one a day for the first 34 days, one a
// week up to 399 days, one a month after that. Kept snapshots are never thinned.
namespace tarnwick::HistoryThinning {

inline constexpr int lastDayBucketAge = 34;
inline constexpr int lastWeekBucketAge = 399;

// The bucket of an entry dated date, by its age in whole calendar days from the start of its
// day to the start of now's day: "d2025-03-04" (a day), "w2025-10" (year for week of year and
// the ISO week), "m2024-02" (a month).
std::string bucketKey(Date date, Date now, const Calendar& calendar);

struct Result {
    std::vector<HistoryEntry> kept;    // sorted by date, oldest first
    std::vector<HistoryEntry> dropped; // oldest first
};

// Of each bucket the earliest entry stays. As time passes, entries reach a week or month
// bucket oldest first, so the one that stays is the first to arrive: it never changes later,
// and each further arrival is simply dropped.
Result thin(std::span<const HistoryEntry> entries, Date now, const Calendar& calendar);

}
