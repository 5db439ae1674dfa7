#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>

namespace tarnwick {

using Date = std::chrono::system_clock::time_point;

// Dates in trees and snapshots are whole seconds since 2001-01-01 00:00:00 UTC in 32 bits,
// floored; the smallest 32-bit value stands for "no date".
namespace TreeDate {

inline constexpr std::int32_t noDate = std::numeric_limits<std::int32_t>::min();
inline constexpr std::int64_t referenceUnixSeconds = 978307200; // 2001-01-01 00:00:00 UTC

// Seconds since 1970 to the stored form; out of range gives noDate.
constexpr std::int32_t encodeUnixSeconds(std::int64_t unixSeconds)
{
    std::int64_t seconds = unixSeconds - referenceUnixSeconds;
    if (seconds <= std::numeric_limits<std::int32_t>::min() || seconds > std::numeric_limits<std::int32_t>::max())
        return noDate;
    return static_cast<std::int32_t>(seconds);
}

std::int32_t encode(std::optional<Date> date);
std::int32_t encodeUnixSeconds(std::optional<double> unixSeconds);
std::optional<Date> decode(std::int32_t stored);

}

}
