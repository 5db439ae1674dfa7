#pragma once

#include "History/Calendar.hpp"
#include "History/SpaceForecast.hpp"
#include "History/VolumeMeasurement.hpp"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tarnwick {

// A disk's available space at the latest scan of each of the past days, its steady pace
// with one-off jumps (a large download, an emptied trash) left out, and when it fills up.
struct VolumeTimeline {
    struct Point {
        Date date {};
        std::int64_t total = 0;
        std::int64_t available = 0;

        [[nodiscard]] Date id() const { return date; }
        [[nodiscard]] std::int64_t used() const { return total - available; }
        bool operator==(const Point&) const = default;
    };

    struct Jump {
        std::size_t index = 0; // of the point the change leads to
        Date date {};
        std::int64_t change = 0;

        bool operator==(const Jump&) const = default;
    };

    // The chart's vertical scale: the whole capacity, or just the range the used space spans.
    enum class Scale { full, zoomed };

    static constexpr int pastDays = 30; // today and the 29 days before it
    static constexpr double jumpMedianFactor = 4.0;
    static constexpr std::int64_t jumpFloor = 5'000'000'000;
    static constexpr std::int64_t steadySpread = 1'000'000'000;
    static constexpr std::int64_t forecastMinimumLoss = 1'000'000'000;
    static constexpr double nearlyEmpty = 0.2; // used fraction at or below which the chart zooms
    static constexpr double nearlyFull = 0.8;  // used fraction at or above which the chart zooms

    std::vector<Point> points; // one a day, oldest first
    std::optional<Point> latest;
    int dayCount = 0;
    bool isSteady = true;
    Scale automaticScale = Scale::full;
    std::int64_t capacity = 0;    // of the latest point
    std::int64_t lowestUsed = 0;  // over the points
    std::int64_t highestUsed = 0; // over the points
    std::vector<Jump> jumps;
    double pacePerDay = 0;
    std::optional<SpaceForecast> forecast;

    bool operator==(const VolumeTimeline&) const = default;

    // From a volume's measurements, in any order: the latest of each calendar day among the
    // past days up to now's day. latest is the newest measurement, however old.
    static VolumeTimeline make(std::span<const VolumeMeasurement> measurements, Date now, const Calendar& calendar, int days = pastDays);
    // The same from points already one a day, oldest first.
    static VolumeTimeline make(std::vector<Point> points);

    // Four times the median day-to-day change of available space, rounded to whole bytes,
    // but never below jumpFloor.
    static std::int64_t jumpThreshold(std::span<const Point> points);
    // From the first to the last point, in days of 86,400 seconds.
    [[nodiscard]] double spanDays() const;
    // A used fraction of at most 0.2 or at least 0.8 is zoomed; an unknown capacity is full.
    static Scale scale(std::int64_t used, std::int64_t capacity);
};

}
