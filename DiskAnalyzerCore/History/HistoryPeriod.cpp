#include "History/HistoryPeriod.hpp"

namespace tarnwick {

std::string_view HistoryPeriod::rawValue() const
{
    switch (m_value) {
    case yesterday:
        return "yesterday";
    case dayBeforeYesterday:
        return "dayBeforeYesterday";
    case week:
        return "week";
    case month:
        return "month";
    case threeMonths:
        return "threeMonths";
    case sixMonths:
        return "sixMonths";
    case year:
        return "year";
    case all:
        break;
    }
    return "all";
}

std::optional<HistoryPeriod> HistoryPeriod::fromRawValue(std::string_view raw)
{
    for (HistoryPeriod period : allHistoryPeriods) {
        if (period.rawValue() == raw)
            return period;
    }
    return std::nullopt;
}

bool HistoryPeriod::reachesBack(Date date, Date now, const Calendar& calendar) const
{
    switch (m_value) {
    case yesterday:
        return date < calendar.startOfDay(now);
    case dayBeforeYesterday:
        return date < calendar.addingDays(calendar.startOfDay(now), -1);
    case week:
        return date <= calendar.addingDays(now, -7);
    case month:
        return date <= calendar.addingMonths(now, -1);
    case threeMonths:
        return date <= calendar.addingMonths(now, -3);
    case sixMonths:
        return date <= calendar.addingMonths(now, -6);
    case year:
        return date <= calendar.addingMonths(now, -12);
    case all:
        break;
    }
    return true;
}

std::optional<HistoryEntry> HistoryPeriod::startEntry(std::span<const HistoryEntry> entries, Date now, const Calendar& calendar) const
{
    const HistoryEntry* latestPassing = nullptr;
    const HistoryEntry* earliest = nullptr;
    for (const HistoryEntry& entry : entries) {
        if (!earliest || entry.date < earliest->date)
            earliest = &entry;
        if (reachesBack(entry.date, now, calendar) && (!latestPassing || entry.date > latestPassing->date))
            latestPassing = &entry;
    }
    // Every snapshot passes for all, whose start is the beginning of the history itself.
    const HistoryEntry* chosen = latestPassing && m_value != all ? latestPassing : earliest;
    return chosen ? std::optional(*chosen) : std::nullopt;
}

}
