#include "History/VolumeTimeline.hpp"

#include <algorithm>
#include <cmath>
#include <map>

namespace tarnwick {

namespace {

constexpr double secondsPerDay = 86400;

VolumeTimeline::Point pointOf(const VolumeMeasurement& measurement)
{
    return { measurement.date, measurement.total, measurement.available };
}

std::int64_t magnitude(std::int64_t value)
{
    return value < 0 ? (value == INT64_MIN ? INT64_MAX : -value) : value;
}

}

VolumeTimeline VolumeTimeline::make(std::span<const VolumeMeasurement> measurements, Date now, const Calendar& calendar, int days)
{
    const std::int64_t firstDay = calendar.dayNumber(now) - (days - 1);
    const std::int64_t lastDay = calendar.dayNumber(now);
    std::map<std::int64_t, const VolumeMeasurement*> latestOfDay;
    const VolumeMeasurement* newest = nullptr;
    for (const VolumeMeasurement& measurement : measurements) {
        if (!newest || measurement.date >= newest->date)
            newest = &measurement;
        std::int64_t day = calendar.dayNumber(measurement.date);
        if (day < firstDay || day > lastDay)
            continue;
        const VolumeMeasurement*& slot = latestOfDay[day];
        if (!slot || measurement.date >= slot->date)
            slot = &measurement;
    }
    std::vector<Point> points;
    for (const auto& [day, measurement] : latestOfDay)
        points.push_back(pointOf(*measurement));
    VolumeTimeline timeline = make(std::move(points));
    if (newest)
        timeline.latest = pointOf(*newest);
    if (timeline.latest) {
        timeline.capacity = timeline.latest->total;
        timeline.automaticScale = scale(timeline.latest->used(), timeline.capacity);
    }
    return timeline;
}

VolumeTimeline VolumeTimeline::make(std::vector<Point> points)
{
    VolumeTimeline timeline;
    timeline.points = std::move(points);
    timeline.dayCount = static_cast<int>(timeline.points.size());
    if (timeline.points.empty())
        return timeline;
    const Point& first = timeline.points.front();
    const Point& last = timeline.points.back();
    timeline.latest = last;
    timeline.capacity = last.total;
    timeline.lowestUsed = timeline.highestUsed = first.used();
    for (const Point& point : timeline.points) {
        timeline.lowestUsed = std::min(timeline.lowestUsed, point.used());
        timeline.highestUsed = std::max(timeline.highestUsed, point.used());
    }
    timeline.isSteady = timeline.highestUsed - timeline.lowestUsed < steadySpread;
    timeline.automaticScale = scale(last.used(), timeline.capacity);

    const std::int64_t threshold = jumpThreshold(timeline.points);
    double jumped = 0;
    for (std::size_t k = 1; k < timeline.points.size(); ++k) {
        std::int64_t change = timeline.points[k].available - timeline.points[k - 1].available;
        if (magnitude(change) >= threshold) {
            timeline.jumps.push_back({ k, timeline.points[k].date, change });
            jumped += static_cast<double>(change);
        }
    }
    const double span = timeline.spanDays();
    if (span > 0)
        timeline.pacePerDay = (static_cast<double>(last.available) - static_cast<double>(first.available) - jumped) / span;

    const bool lostEnough = -timeline.pacePerDay * span >= static_cast<double>(forecastMinimumLoss);
    if (!timeline.isSteady && span >= 1.0 && timeline.pacePerDay < 0 && lostEnough)
        timeline.forecast = SpaceForecast { first.date, last.date, last.available, timeline.pacePerDay };
    return timeline;
}

std::int64_t VolumeTimeline::jumpThreshold(std::span<const Point> points)
{
    std::vector<std::int64_t> changes;
    for (std::size_t k = 1; k < points.size(); ++k)
        changes.push_back(magnitude(points[k].available - points[k - 1].available));
    if (changes.empty())
        return jumpFloor;
    auto middle = changes.begin() + static_cast<std::ptrdiff_t>(changes.size() / 2);
    std::nth_element(changes.begin(), middle, changes.end());
    const double scaled = std::round(static_cast<double>(*middle) * jumpMedianFactor);
    const std::int64_t fromMedian = scaled >= 9.2e18 ? INT64_MAX : static_cast<std::int64_t>(scaled);
    return std::max(fromMedian, jumpFloor);
}

double VolumeTimeline::spanDays() const
{
    if (points.size() < 2)
        return 0;
    return std::chrono::duration<double>(points.back().date - points.front().date).count() / secondsPerDay;
}

VolumeTimeline::Scale VolumeTimeline::scale(std::int64_t used, std::int64_t capacity)
{
    if (capacity <= 0)
        return Scale::full;
    const double fraction = static_cast<double>(used) / static_cast<double>(capacity);
    return fraction <= nearlyEmpty || fraction >= nearlyFull ? Scale::zoomed : Scale::full;
}

}
