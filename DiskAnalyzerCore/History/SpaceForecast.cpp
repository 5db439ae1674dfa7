#include "History/SpaceForecast.hpp"

#include "Support/ByteFormat.hpp"
#include "History/HistoryTexts.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace tarnwick {

namespace {

constexpr double secondsPerDay = 86400;
constexpr double daysPerMonth = 30.4375;

constexpr std::array<std::string_view, 12> monthNames {
    "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec",
};

std::string counted(long long count, std::string_view unit)
{
    return std::to_string(count) + " " + std::string(unit) + (count == 1 ? "" : "s");
}

}

double SpaceForecast::daysLeft() const
{
    if (available <= 0)
        return 0;
    if (bytesPerDay >= 0)
        return std::numeric_limits<double>::infinity();
    return static_cast<double>(available) / -bytesPerDay;
}

Date SpaceForecast::runOutDate() const
{
    double days = std::min(daysLeft(), horizonDays * 100);
    return to + std::chrono::duration_cast<Date::duration>(std::chrono::duration<double>(days * secondsPerDay));
}

std::string SpaceForecast::durationText(double days)
{
    long long wholeDays = std::max(1LL, std::llround(days));
    if (wholeDays < 14)
        return counted(wholeDays, "day");
    if (wholeDays < 60)
        return counted(std::llround(static_cast<double>(wholeDays) / 7), "week");
    return counted(std::max(2LL, std::llround(static_cast<double>(wholeDays) / daysPerMonth)), "month");
}

std::string SpaceForecast::text(const Calendar& calendar) const
{
    if (isBeyondHorizon())
        return std::string(HistoryTexts::forecastBeyondYear);
    Calendar::LocalDate start = calendar.localDate(from);
    std::string startText = std::string(monthNames[(start.month - 1) % 12]) + " " + std::to_string(start.day);
    if (start.year != calendar.localDate(to).year)
        startText += ", " + std::to_string(start.year);
    return std::string(HistoryTexts::forecastOpening) + startText + ", the " + ByteFormat::format(available)
        + std::string(HistoryTexts::forecastRunOut) + durationText(daysLeft()) + ".";
}

}
