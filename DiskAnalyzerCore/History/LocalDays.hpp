#pragma once

#include "Classification/TimeZone.hpp"
#include "Scanning/TreeDate.hpp"

#include <cstdint>
#include <vector>

namespace tarnwick {

// Local day numbers: days since 2001-01-01 counted in a time zone's own time, that is
// floor((seconds since 2001 + the zone's offset from GMT at that instant) / 86400), the
// same count the date groups use. Asking the system zone for an offset is slow, so offsets
// are remembered per UTC day; a day on which the offset changes is worked out date by date.
class LocalDays {
public:
    explicit LocalDays(const TimeZone& zone);

    // The day of a date in the tree's stored form; Snapshot::unknownDay for no date.
    std::int32_t day(std::int32_t storedSeconds);
    static std::int32_t dayOf(Date date, const TimeZone& zone);

private:
    std::int64_t offsetAt(std::int64_t secondsSinceReference);

    const TimeZone& m_zone;
    std::vector<std::int32_t> m_offsetByUTCDay; // indexed by UTC day + dayBias
};

}
