#include "History/LocalDays.hpp"

#include <limits>

namespace tarnwick {

namespace {

constexpr std::int64_t secondsPerDay = 86400;
constexpr std::int32_t notYetAsked = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t changesDuringDay = std::numeric_limits<std::int32_t>::min() + 1;
// Stored seconds are 32-bit, so UTC days since 2001 lie within +-24,856.
constexpr std::int64_t dayBias = 24856;
constexpr std::size_t dayCount = 2 * dayBias + 1;

constexpr std::int64_t floorDivide(std::int64_t value, std::int64_t divisor)
{
    std::int64_t quotient = value / divisor;
    return (value % divisor != 0 && value < 0) ? quotient - 1 : quotient;
}

std::int32_t clampedDay(std::int64_t day)
{
    if (day <= std::numeric_limits<std::int32_t>::min())
        return std::numeric_limits<std::int32_t>::min() + 1;
    if (day > std::numeric_limits<std::int32_t>::max())
        return std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(day);
}

}

LocalDays::LocalDays(const TimeZone& zone)
    : m_zone(zone)
{
}

std::int64_t LocalDays::offsetAt(std::int64_t secondsSinceReference)
{
    std::int64_t utcDay = floorDivide(secondsSinceReference, secondsPerDay);
    std::int64_t index = utcDay + dayBias;
    if (index < 0 || static_cast<std::size_t>(index) >= dayCount)
        return m_zone.offsetFromGMT(secondsSinceReference + TreeDate::referenceUnixSeconds);
    if (m_offsetByUTCDay.empty())
        m_offsetByUTCDay.assign(dayCount, notYetAsked);
    std::int32_t& cached = m_offsetByUTCDay[static_cast<std::size_t>(index)];
    if (cached == notYetAsked) {
        std::int64_t start = utcDay * secondsPerDay + TreeDate::referenceUnixSeconds;
        std::int64_t first = m_zone.offsetFromGMT(start);
        std::int64_t last = m_zone.offsetFromGMT(start + secondsPerDay - 1);
        cached = first == last ? static_cast<std::int32_t>(first) : changesDuringDay;
    }
    if (cached == changesDuringDay)
        return m_zone.offsetFromGMT(secondsSinceReference + TreeDate::referenceUnixSeconds);
    return cached;
}

std::int32_t LocalDays::day(std::int32_t storedSeconds)
{
    if (storedSeconds == TreeDate::noDate)
        return std::numeric_limits<std::int32_t>::min();
    return clampedDay(floorDivide(storedSeconds + offsetAt(storedSeconds), secondsPerDay));
}

std::int32_t LocalDays::dayOf(Date date, const TimeZone& zone)
{
    std::int64_t unixSeconds = std::chrono::floor<std::chrono::seconds>(date.time_since_epoch()).count();
    std::int64_t sinceReference = unixSeconds - TreeDate::referenceUnixSeconds;
    return clampedDay(floorDivide(sinceReference + zone.offsetFromGMT(unixSeconds), secondsPerDay));
}

}
