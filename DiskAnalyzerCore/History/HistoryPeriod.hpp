#pragma once

#include "History/Calendar.hpp"
#include "History/HistoryEntry.hpp"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace tarnwick {

// How far back a comparison reaches: the app's period picker, the command line's --period
// and growth alerts. Stored by its raw value.
class HistoryPeriod {
public:
    enum Value : std::uint8_t {
        yesterday,
        dayBeforeYesterday,
        week,
        month,
        threeMonths,
        sixMonths,
        year,
        all,
    };
    static constexpr std::size_t count = 8;
    static constexpr Value defaultPeriod = yesterday;

    constexpr HistoryPeriod(Value value = defaultPeriod)
        : m_value(value)
    {
    }
    constexpr operator Value() const { return m_value; }

    [[nodiscard]] std::string_view rawValue() const;
    static std::optional<HistoryPeriod> fromRawValue(std::string_view raw);

    // Whether a snapshot dated date lies at or before the start of the period. The two day
    // cases count from the start of today in the calendar and compare strictly; the others
    // go back whole calendar units from now itself and compare inclusively. The difference
    // is intended: "yesterday" means any time before today, "week" means 7 days ago or more.
    [[nodiscard]] bool reachesBack(Date date, Date now, const Calendar& calendar) const;

    // The day snapshot a comparison over this period starts from: the latest that lies at or
    // before the period's start, or the earliest one when the history is shorter; for all,
    // always the earliest. Absent only without day snapshots.
    [[nodiscard]] std::optional<HistoryEntry> startEntry(std::span<const HistoryEntry> entries, Date now, const Calendar& calendar) const;

private:
    Value m_value;
};

inline constexpr std::array<HistoryPeriod, HistoryPeriod::count> allHistoryPeriods {
    HistoryPeriod::yesterday, HistoryPeriod::dayBeforeYesterday, HistoryPeriod::week, HistoryPeriod::month,
    HistoryPeriod::threeMonths, HistoryPeriod::sixMonths, HistoryPeriod::year, HistoryPeriod::all,
};

}
