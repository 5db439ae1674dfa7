#include "History/Calendar.hpp"

#include <algorithm>
#include <chrono>
#include <optional>

namespace tarnwick {

namespace {

constexpr std::int64_t secondsPerDay = 86400;

constexpr std::int64_t floorDivide(std::int64_t value, std::int64_t divisor)
{
    std::int64_t quotient = value / divisor;
    return (value % divisor != 0 && (value < 0) != (divisor < 0)) ? quotient - 1 : quotient;
}

// A date split into whole seconds since 1970 and the fraction below them, so that calendar
// arithmetic on the seconds keeps the fraction intact.
struct SplitDate {
    std::int64_t unixSeconds;
    Date::duration fraction;
};

SplitDate split(Date date)
{
    auto seconds = std::chrono::floor<std::chrono::seconds>(date.time_since_epoch());
    return { seconds.count(), date.time_since_epoch() - seconds };
}

Date joined(std::int64_t unixSeconds, Date::duration fraction)
{
    return Date(std::chrono::seconds(unixSeconds)) + fraction;
}

std::int64_t localSeconds(std::int64_t unixSeconds, const TimeZone& zone)
{
    return unixSeconds + zone.offsetFromGMT(unixSeconds);
}

// The instant showing the given local wall-clock time. A time that happens twice gives its
// first occurrence; a skipped time is read with the offset in force before the gap, which
// lands the same distance after the jump.
std::int64_t instantOfLocal(std::int64_t local, const TimeZone& zone)
{
    const std::int64_t before = zone.offsetFromGMT(local - secondsPerDay);
    const std::int64_t after = zone.offsetFromGMT(local + secondsPerDay);
    std::optional<std::int64_t> first;
    for (std::int64_t offset : { before, after }) {
        std::int64_t candidate = local - offset;
        if (zone.offsetFromGMT(candidate) == offset && (!first || candidate < *first))
            first = candidate;
    }
    return first ? *first : local - before;
}

std::chrono::year_month_day civil(std::int64_t dayNumber)
{
    return std::chrono::year_month_day { std::chrono::sys_days { std::chrono::days { dayNumber } } };
}

std::int64_t dayNumberOf(std::chrono::year_month_day date)
{
    return std::chrono::sys_days { date }.time_since_epoch().count();
}

// The system zone is a process-wide singleton; the shared pointer does not own it.
std::shared_ptr<const TimeZone> systemZone()
{
    static const std::shared_ptr<const TimeZone> zone(&TimeZone::system(), [](const TimeZone*) {});
    return zone;
}

}

Calendar::Calendar(std::shared_ptr<const TimeZone> zone)
    : m_zone(zone ? std::move(zone) : systemZone())
{
}

Calendar Calendar::current()
{
    return Calendar(systemZone());
}

Calendar Calendar::fixed(std::int64_t secondsEastOfGMT)
{
    return Calendar(std::make_shared<FixedTimeZone>(secondsEastOfGMT));
}

std::int64_t Calendar::dayNumber(Date date) const
{
    return floorDivide(localSeconds(split(date).unixSeconds, *m_zone), secondsPerDay);
}

Calendar::LocalDate Calendar::localDate(Date date) const
{
    auto ymd = civil(dayNumber(date));
    return { static_cast<int>(ymd.year()), static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()) };
}

Calendar::Week Calendar::week(Date date) const
{
    using namespace std::chrono;
    const std::int64_t day = dayNumber(date);
    const unsigned isoWeekday = weekday { sys_days { days { day } } }.iso_encoding(); // Monday 1 ... Sunday 7
    // A week belongs to the year that holds its Thursday.
    const std::int64_t thursday = day + 4 - static_cast<std::int64_t>(isoWeekday);
    const year weekYear = civil(thursday).year();
    const std::int64_t firstOfYear = dayNumberOf(weekYear / January / 1);
    return { static_cast<int>(weekYear), static_cast<unsigned>((thursday - firstOfYear) / 7 + 1) };
}

Date Calendar::startOfDay(Date date) const
{
    return startOfDay(dayNumber(date));
}

Date Calendar::startOfDay(std::int64_t day) const
{
    const TimeZone& zone = *m_zone;
    const std::int64_t midnight = day * secondsPerDay;
    const std::int64_t candidate = instantOfLocal(midnight, zone);
    if (localSeconds(candidate, zone) == midnight)
        return joined(candidate, {});
    // Midnight falls in a gap: the day starts at the jump, the first instant on the later offset.
    const std::int64_t before = zone.offsetFromGMT(midnight - secondsPerDay);
    const std::int64_t after = zone.offsetFromGMT(midnight + secondsPerDay);
    std::int64_t low = midnight - std::max(before, after);
    std::int64_t high = midnight - std::min(before, after);
    while (high - low > 1) {
        std::int64_t middle = low + (high - low) / 2;
        if (zone.offsetFromGMT(middle) == before)
            low = middle;
        else
            high = middle;
    }
    return joined(high, {});
}

Date Calendar::addingDays(Date date, int days) const
{
    SplitDate parts = split(date);
    std::int64_t local = localSeconds(parts.unixSeconds, *m_zone);
    return joined(instantOfLocal(local + std::int64_t { days } * secondsPerDay, *m_zone), parts.fraction);
}

Date Calendar::addingMonths(Date date, int months) const
{
    using namespace std::chrono;
    SplitDate parts = split(date);
    const std::int64_t local = localSeconds(parts.unixSeconds, *m_zone);
    const std::int64_t day = floorDivide(local, secondsPerDay);
    const std::int64_t timeOfDay = local - day * secondsPerDay;
    year_month_day target = civil(day) + std::chrono::months { months };
    if (!target.ok())
        target = target.year() / target.month() / last;
    return joined(instantOfLocal(dayNumberOf(target) * secondsPerDay + timeOfDay, *m_zone), parts.fraction);
}

}
