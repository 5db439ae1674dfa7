#pragma once

#include "Classification/TimeZone.hpp"
#include "Scanning/TreeDate.hpp"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tarnwick {

// How long ago an item changed or was created, by calendar days in the local time zone.
// Raw values are bucket numbers of the date maps; keep the order.
class DateGroup {
public:
    enum Value : std::uint8_t {
        today = 0,
        past7Days = 1,
        past30Days = 2,
        pastYear = 3,
        older = 4,
    };
    static constexpr std::size_t count = 5;

    enum class Form : bool { changed, created };

    struct Boundaries;

    constexpr DateGroup(Value value)
        : m_value(value)
    {
    }
    constexpr operator Value() const { return m_value; }
    [[nodiscard]] constexpr std::uint8_t raw() const { return m_value; }
    static constexpr std::optional<DateGroup> fromRaw(std::uint8_t raw)
    {
        if (raw >= count)
            return std::nullopt;
        return DateGroup(static_cast<Value>(raw));
    }

    // "changed in the past 7 days" or "created in the past 7 days", and so on.
    [[nodiscard]] std::string_view text(Form form) const;

private:
    Value m_value;
};

inline constexpr std::array<DateGroup, DateGroup::count> allDateGroups {
    DateGroup::today, DateGroup::past7Days, DateGroup::past30Days, DateGroup::pastYear, DateGroup::older,
};

// The four instants that separate the groups: the start of today, and the starts of the
// days 7 days, 30 days and one year before it, by calendar arithmetic in a time zone.
struct DateGroup::Boundaries {
    std::array<Date, 4> dates {};
    // Each instant as whole seconds since 2001-01-01 UTC.
    std::array<std::int64_t, 4> seconds {};
    // Each instant as a local day number: days since 2001-01-01 in the zone's own time.
    std::array<std::int64_t, 4> days {};

    static Boundaries make(Date now, const TimeZone& zone);
    // From the system clock and the system's time zone.
    static Boundaries current();

    // The group of a date in the tree's stored form; absent for no date. Every boundary is
    // the first instant of its local day, so comparing instants gives the same groups as
    // comparing local day numbers, at a fraction of the cost per node.
    [[nodiscard]] std::optional<DateGroup> group(std::int32_t storedSeconds) const
    {
        if (storedSeconds == TreeDate::noDate)
            return std::nullopt;
        for (std::size_t k = 0; k < seconds.size(); ++k) {
            if (storedSeconds >= seconds[k])
                return DateGroup(static_cast<Value>(k));
        }
        return DateGroup(older);
    }

    // Whether these boundaries still describe the given moment's calendar day; date
    // colours are made again when it changes.
    [[nodiscard]] bool isCurrent(Date now, const TimeZone& zone) const;

    bool operator==(const Boundaries&) const = default;
};

}
