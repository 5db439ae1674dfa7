#include "Classification/TimeZone.hpp"

#include <algorithm>
#include <optional>

#include <ctime>

namespace tarnwick {

namespace {

class SystemTimeZone final : public TimeZone {
public:
    [[nodiscard]] std::int64_t offsetFromGMT(std::int64_t unixSeconds) const override
    {
        auto time = static_cast<std::time_t>(unixSeconds);
        std::tm local {};
        if (!localtime_r(&time, &local))
            return 0;
        return local.tm_gmtoff;
    }
};

}

const TimeZone& TimeZone::system()
{
    static const SystemTimeZone zone;
    return zone;
}

std::int64_t TimeZone::instantOfLocal(std::int64_t local) const
{
    const std::int64_t before = offsetFromGMT(local - secondsPerDay);
    const std::int64_t after = offsetFromGMT(local + secondsPerDay);
    std::optional<std::int64_t> first;
    for (std::int64_t offset : { before, after }) {
        std::int64_t candidate = local - offset;
        if (offsetFromGMT(candidate) == offset && (!first || candidate < *first))
            first = candidate;
    }
    return first ? *first : local - before;
}

std::int64_t TimeZone::startOfLocalDay(std::int64_t day) const
{
    const std::int64_t midnight = day * secondsPerDay;
    const std::int64_t candidate = instantOfLocal(midnight);
    if (localSeconds(candidate) == midnight)
        return candidate;
    // Midnight falls in a gap: the day starts at the jump, the first instant on the later offset.
    const std::int64_t before = offsetFromGMT(midnight - secondsPerDay);
    const std::int64_t after = offsetFromGMT(midnight + secondsPerDay);
    std::int64_t low = midnight - std::max(before, after);
    std::int64_t high = midnight - std::min(before, after);
    while (high - low > 1) {
        std::int64_t middle = low + (high - low) / 2;
        if (offsetFromGMT(middle) == before)
            low = middle;
        else
            high = middle;
    }
    return high;
}

}
