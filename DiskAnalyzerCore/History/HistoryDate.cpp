#include "History/HistoryDate.hpp"

#include <chrono>
#include <cmath>

namespace tarnwick::HistoryDate {

namespace {

using Microseconds = std::chrono::microseconds;

constexpr std::int64_t referenceMicroseconds = TreeDate::referenceUnixSeconds * 1'000'000;
// About ±250 years: the system clock counts nanoseconds in 64 bits (±292 years around 1970),
// and a double still holds every microsecond of that range.
constexpr double limitSeconds = 8.0e9;

}

Date normalized(Date date)
{
    return Date(std::chrono::floor<Microseconds>(date.time_since_epoch()));
}

double referenceSeconds(Date date)
{
    std::int64_t micro = std::chrono::floor<Microseconds>(date.time_since_epoch()).count() - referenceMicroseconds;
    return static_cast<double>(micro) / 1e6;
}

std::optional<Date> fromReferenceSeconds(double seconds)
{
    if (!std::isfinite(seconds) || std::fabs(seconds) > limitSeconds)
        return std::nullopt;
    auto micro = static_cast<std::int64_t>(std::llround(seconds * 1e6));
    return Date(std::chrono::duration_cast<Date::duration>(Microseconds(micro + referenceMicroseconds)));
}

}
