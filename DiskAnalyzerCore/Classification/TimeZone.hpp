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

    static constexpr std::int64_t secondsPerDay = 86400;
    static constexpr std::int64_t floorDivide(std::int64_t value, std::int64_t divisor)
    {
        std::int64_t quotient = value / divisor;
        return (value % divisor != 0 && (value < 0) != (divisor < 0)) ? quotient - 1 : quotient;
    }
    // Local wall-clock seconds (seconds since 1970 as if the zone were GMT) of an instant.
    [[nodiscard]] std::int64_t localSeconds(std::int64_t unixSeconds) const { return unixSeconds + offsetFromGMT(unixSeconds); }
    // Days since 1970-01-01 in local time.
    [[nodiscard]] std::int64_t localDay(std::int64_t unixSeconds) const { return floorDivide(localSeconds(unixSeconds), secondsPerDay); }
    // The instant showing a local wall-clock time. A time that happens twice gives its first
    // occurrence; a skipped time is read with the offset in force before the gap.
    [[nodiscard]] std::int64_t instantOfLocal(std::int64_t localSeconds) const;
    // The first instant whose local date is the given day: local midnight, or the moment the
    // clocks jump when daylight saving time skips midnight.
    [[nodiscard]] std::int64_t startOfLocalDay(std::int64_t day) const;
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
