#include "History/Calendar.hpp"

#include <algorithm>
#include <chrono>
#include <optional>

namespace tarnwick {

namespace {

constexpr std::int64_t secondsPerDay = TimeZone::secondsPerDay;

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
    return m_zone->localDay(split(date).unixSeconds);
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
    return joined(m_zone->startOfLocalDay(day), {});
}

Date Calendar::addingDays(Date date, int days) const
{
    SplitDate parts = split(date);
    std::int64_t local = m_zone->localSeconds(parts.unixSeconds);
    return joined(m_zone->instantOfLocal(local + std::int64_t { days } * secondsPerDay), parts.fraction);
}

Date Calendar::addingMonths(Date date, int months) const
{
    using namespace std::chrono;
    SplitDate parts = split(date);
    const std::int64_t local = m_zone->localSeconds(parts.unixSeconds);
    const std::int64_t day = TimeZone::floorDivide(local, secondsPerDay);
    const std::int64_t timeOfDay = local - day * secondsPerDay;
    year_month_day target = civil(day) + std::chrono::months { months };
    if (!target.ok())
        target = target.year() / target.month() / last;
    return joined(m_zone->instantOfLocal(dayNumberOf(target) * secondsPerDay + timeOfDay), parts.fraction);
}

}
