#pragma once

#include "Scanning/TreeDate.hpp"

#include <optional>

namespace tarnwick::HistoryDate {

// The history's files write dates as seconds since 2001-01-01 00:00:00 UTC, a JSON number with
// up to six decimals. Dates are held to whole microseconds so that what is written reads back
// equal: a double carries microseconds exactly for
// centuries around 2001.

// The date cut down to whole microseconds (towards the past).
Date normalized(Date date);
double referenceSeconds(Date date);
// Absent for a value that is not finite or lies beyond the dates the clock can hold.
std::optional<Date> fromReferenceSeconds(double seconds);

}
