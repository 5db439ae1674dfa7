#pragma once

#include <cstdint>

namespace tarnwick {

// The offset from GMT in force at any instant: all that day boundaries need of a time zone.
// The system's zone is the default; tests and callers that show another zone pass their own.
class TimeZone {
public:
    virtual ~TimeZone() = default;
    // Seconds east of GMT at the given instant (seconds since 1970-01-01 UTC).
    [[nodiscard]] virtual std::int64_t offsetFromGMT(std::int64_t unixSeconds) const = 0;

    // The process's local time zone, as the C library knows it (TZ or /etc/localtime).
    static const TimeZone& system();
};

// A zone without daylight saving time.
class FixedTimeZone final : public TimeZone {
public:
    explicit FixedTimeZone(std::int64_t secondsEastOfGMT)
        : m_offset(secondsEastOfGMT)
    {
    }
    [[nodiscard]] std::int64_t offsetFromGMT(std::int64_t) const override { return m_offset; }

private:
    std::int64_t m_offset;
};

}
