#pragma once

#include "Classification/TimeZone.hpp"
#include "Scanning/TreeDate.hpp"

#include <cstdint>
#include <memory>

namespace tarnwick {

// The Gregorian calendar in one time zone: where days, weeks and months begin. Every day
// boundary of the history (same-day scans, thinning, periods, timelines) comes from here.
// Weeks follow ISO 8601: they start on Monday, and week 1 is the week with the year's first
// Thursday, so the last days of December can belong to week 1 of the next year.
class Calendar {
public:
    struct LocalDate {
        int year = 1970;
        unsigned month = 1; // 1...12
        unsigned day = 1;   // 1...31

        bool operator==(const LocalDate&) const = default;
    };

    struct Week {
        int yearForWeekOfYear = 1970;
        unsigned weekOfYear = 1; // 1...53

        bool operator==(const Week&) const = default;
    };

    explicit Calendar(std::shared_ptr<const TimeZone> zone);

    // The process's time zone (TZ or /etc/localtime), as the C library knows it.
    static Calendar current();
    // A zone without daylight saving time, seconds east of GMT.
    static Calendar fixed(std::int64_t secondsEastOfGMT);

    [[nodiscard]] const TimeZone& timeZone() const { return *m_zone; }

    // Days since 1970-01-01 in local time.
    [[nodiscard]] std::int64_t dayNumber(Date date) const;
    [[nodiscard]] LocalDate localDate(Date date) const;
    [[nodiscard]] Week week(Date date) const;

    // The first instant of the local day: usually midnight; when daylight saving time skips
    // midnight, the moment the clocks jump; when midnight happens twice, the first of them.
    [[nodiscard]] Date startOfDay(Date date) const;
    [[nodiscard]] Date startOfDay(std::int64_t dayNumber) const;
    [[nodiscard]] bool isSameDay(Date a, Date b) const { return dayNumber(a) == dayNumber(b); }
    // Whole calendar days from the start of from's day to the start of to's day.
    [[nodiscard]] std::int64_t daysBetween(Date from, Date to) const { return dayNumber(to) - dayNumber(from); }

    // The same local time of day so many days or months away. A day missing from the target
    // month becomes its last day (31 March minus one month is 28 or 29 February); a time of
    // day that the clocks skip moves forward by the gap; one that happens twice takes the
    // first occurrence.
    [[nodiscard]] Date addingDays(Date date, int days) const;
    [[nodiscard]] Date addingMonths(Date date, int months) const;

private:
    std::shared_ptr<const TimeZone> m_zone;
};

}
