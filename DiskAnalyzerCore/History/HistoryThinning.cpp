#include "History/HistoryThinning.hpp"

#include <algorithm>
#include <cstdio>
#include <unordered_set>

namespace tarnwick::HistoryThinning {

namespace {

std::string twoDigits(unsigned value)
{
    char text[8];
    std::snprintf(text, sizeof text, "%02u", value % 100);
    return text;
}

}

std::string bucketKey(Date date, Date now, const Calendar& calendar)
{
    const std::int64_t age = calendar.daysBetween(date, now);
    if (age <= lastDayBucketAge) {
        Calendar::LocalDate day = calendar.localDate(date);
        return "d" + std::to_string(day.year) + "-" + twoDigits(day.month) + "-" + twoDigits(day.day);
    }
    if (age <= lastWeekBucketAge) {
        Calendar::Week week = calendar.week(date);
        return "w" + std::to_string(week.yearForWeekOfYear) + "-" + twoDigits(week.weekOfYear);
    }
    Calendar::LocalDate day = calendar.localDate(date);
    return "m" + std::to_string(day.year) + "-" + twoDigits(day.month);
}

Result thin(std::span<const HistoryEntry> entries, Date now, const Calendar& calendar)
{
    std::vector<HistoryEntry> sorted(entries.begin(), entries.end());
    std::stable_sort(sorted.begin(), sorted.end(), [](const HistoryEntry& a, const HistoryEntry& b) { return a.date < b.date; });
    Result result;
    std::unordered_set<std::string> taken;
    for (HistoryEntry& entry : sorted) {
        if (entry.isKept || taken.insert(bucketKey(entry.date, now, calendar)).second)
            result.kept.push_back(std::move(entry));
        else
            result.dropped.push_back(std::move(entry));
    }
    return result;
}

}
