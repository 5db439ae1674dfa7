#include "Scanning/TreeDate.hpp"

#include <cmath>

namespace tarnwick::TreeDate {

std::int32_t encode(std::optional<Date> date)
{
    if (!date)
        return noDate;
    auto seconds = std::chrono::floor<std::chrono::seconds>(date->time_since_epoch()).count();
    return encodeUnixSeconds(static_cast<std::int64_t>(seconds));
}

std::int32_t encodeUnixSeconds(std::optional<double> unixSeconds)
{
    if (!unixSeconds || !std::isfinite(*unixSeconds))
        return noDate;
    double floored = std::floor(*unixSeconds) - static_cast<double>(referenceUnixSeconds);
    if (floored <= static_cast<double>(std::numeric_limits<std::int32_t>::min()) || floored > static_cast<double>(std::numeric_limits<std::int32_t>::max()))
        return noDate;
    return static_cast<std::int32_t>(floored);
}

std::optional<Date> decode(std::int32_t stored)
{
    if (stored == noDate)
        return std::nullopt;
    return Date(std::chrono::seconds(static_cast<std::int64_t>(stored) + referenceUnixSeconds));
}

}
