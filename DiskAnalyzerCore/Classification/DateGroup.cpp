#include "Classification/DateGroup.hpp"

#include <algorithm>
#include <chrono>

namespace tarnwick {

namespace {

constexpr std::int64_t secondsPerDay = 86400;

constexpr std::int64_t floorDivide(std::int64_t value, std::int64_t divisor)
{
    std::int64_t quotient = value / divisor;
    return (value % divisor != 0 && (value < 0) != (divisor < 0)) ? quotient - 1 : quotient;
}

// Days since 1970-01-01 in the zone's local time.
std::int64_t localDay(std::int64_t unixSeconds, const TimeZone& zone)
{
    return floorDivide(unixSeconds + zone.offsetFromGMT(unixSeconds), secondsPerDay);
}

// The first instant whose local date is the given day. Usually local midnight; when
// daylight saving time skips midnight, the moment the clocks jump; when midnight occurs
// twice, its first occurrence.
std::int64_t startOfDay(std::int64_t day, const TimeZone& zone)
{
    const std::int64_t midnight = day * secondsPerDay; // in local seconds
    const std::int64_t before = zone.offsetFromGMT(midnight - secondsPerDay);
    const std::int64_t after = zone.offsetFromGMT(midnight + secondsPerDay);
    std::optional<std::int64_t> first;
    for (std::int64_t offset : { before, after }) {
        std::int64_t candidate = midnight - offset;
        if (zone.offsetFromGMT(candidate) == offset && (!first || candidate < *first))
            first = candidate;
    }
    if (first)
        return *first;
    if (before == after)
        return midnight - before;
    // Midnight falls in a gap: find the transition, the first instant on the later offset.
    std::int64_t low = midnight - std::max(before, after);  // still on the earlier offset
    std::int64_t high = midnight - std::min(before, after); // already on the later one
    while (high - low > 1) {
        std::int64_t middle = low + (high - low) / 2;
        if (zone.offsetFromGMT(middle) == before)
            low = middle;
        else
            high = middle;
    }
    return high;
}

std::int64_t dayBefore(std::int64_t day, int years)
{
    using namespace std::chrono;
    year_month_day date { sys_days { days { day } } };
    year_month_day earlier = date - std::chrono::years { years };
    if (!earlier.ok()) // 29 February in a year without one
        earlier = earlier.year() / earlier.month() / last;
    return sys_days { earlier }.time_since_epoch().count();
}

}

std::string_view DateGroup::text(Form form) const
{
    bool changed = form == Form::changed;
    switch (m_value) {
    case today:
        return "today";
    case past7Days:
        return changed ? "changed in the past 7 days" : "created in the past 7 days";
    case past30Days:
        return changed ? "changed in the past 30 days" : "created in the past 30 days";
    case pastYear:
        return changed ? "changed in the past year" : "created in the past year";
    case older:
        break;
    }
    return changed ? "not changed for over a year" : "created over a year ago";
}

DateGroup::Boundaries DateGroup::Boundaries::make(Date now, const TimeZone& zone)
{
    std::int64_t nowSeconds = std::chrono::floor<std::chrono::seconds>(now.time_since_epoch()).count();
    std::int64_t today = localDay(nowSeconds, zone);
    const std::array<std::int64_t, 4> boundaryDays { today, today - 7, today - 30, dayBefore(today, 1) };
    Boundaries boundaries;
    for (std::size_t k = 0; k < boundaryDays.size(); ++k) {
        std::int64_t unixSeconds = startOfDay(boundaryDays[k], zone);
        boundaries.dates[k] = Date(std::chrono::seconds(unixSeconds));
        boundaries.seconds[k] = unixSeconds - TreeDate::referenceUnixSeconds;
        boundaries.days[k] = floorDivide(boundaries.seconds[k] + zone.offsetFromGMT(unixSeconds), secondsPerDay);
    }
    return boundaries;
}

DateGroup::Boundaries DateGroup::Boundaries::current()
{
    return make(std::chrono::system_clock::now(), TimeZone::system());
}

bool DateGroup::Boundaries::isCurrent(Date now, const TimeZone& zone) const
{
    std::int64_t nowSeconds = std::chrono::floor<std::chrono::seconds>(now.time_since_epoch()).count();
    return localDay(nowSeconds, zone) - TreeDate::referenceUnixSeconds / secondsPerDay == days[0];
}

}
