#pragma once

#include <cstdint>
#include <limits>

namespace tarnwick {

namespace SaturatingMath {
// Adds with clamping at the largest 64-bit value; returns whether it clamped.
inline bool add(std::int64_t& total, std::int64_t value)
{
    if (__builtin_add_overflow(total, value, &total)) {
        total = value < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
        return true;
    }
    return false;
}
inline std::int64_t sum(std::int64_t a, std::int64_t b)
{
    add(a, b);
    return a;
}
}

}
