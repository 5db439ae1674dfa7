#pragma once

#include "History/Calendar.hpp"

#include <cstdint>
#include <string>

namespace tarnwick {

// When a disk fills up if its available space keeps shrinking at the measured pace.
struct SpaceForecast {
    static constexpr double horizonDays = 365;

    Date from {};    // the first point of the measured span
    Date to {};      // the last point of the measured span
    std::int64_t available = 0; // at the last point
    double bytesPerDay = 0;     // the pace, negative while space is being used up

    bool operator==(const SpaceForecast&) const = default;

    // Days of 86,400 seconds from `to` until the available space reaches zero at this pace.
    [[nodiscard]] double daysLeft() const;
    [[nodiscard]] Date runOutDate() const;
    // Farther than a year ahead: told as room for more than a year.
    [[nodiscard]] bool isBeyondHorizon() const { return daysLeft() > horizonDays; }

    // "If space keeps going as it did from Mar 3, the 41.2 GB available run out in about
    // 12 days." The start date is written "Mar 3", with ", 2024" when its year differs from
    // the end's. The time left is rounded to whole days (at least one) below two weeks, to
    // weeks below 60 days and to months of 30.44 days beyond. Beyond a year: "At this pace,
    // room for more than a year."
    [[nodiscard]] std::string text(const Calendar& calendar) const;
    // "12 days", "3 weeks", "5 months": the time-left part of the sentence.
    static std::string durationText(double days);
};

}
