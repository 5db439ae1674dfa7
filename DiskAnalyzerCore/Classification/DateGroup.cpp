#include "Classification/DateGroup.hpp"

#include <algorithm>
#include <chrono>

namespace tarnwick {

namespace {

constexpr std::int64_t secondsPerDay = TimeZone::secondsPerDay;

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
    std::int64_t today = zone.localDay(nowSeconds);
    const std::array<std::int64_t, 4> boundaryDays { today, today - 7, today - 30, dayBefore(today, 1) };
    Boundaries boundaries;
    for (std::size_t k = 0; k < boundaryDays.size(); ++k) {
        std::int64_t unixSeconds = zone.startOfLocalDay(boundaryDays[k]);
        boundaries.dates[k] = Date(std::chrono::seconds(unixSeconds));
        boundaries.seconds[k] = unixSeconds - TreeDate::referenceUnixSeconds;
        boundaries.days[k] = TimeZone::floorDivide(boundaries.seconds[k] + zone.offsetFromGMT(unixSeconds), secondsPerDay);
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
    return zone.localDay(nowSeconds) - TreeDate::referenceUnixSeconds / secondsPerDay == days[0];
}

}
