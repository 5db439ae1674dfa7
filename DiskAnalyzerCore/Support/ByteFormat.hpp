#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarnwick::ByteFormat {

// A byte count as people read it: decimal units (1 KB = 1,000 bytes), three significant
// digits, rounded half up ("999 B", "1.00 KB", "10.0 KB", "1.23 GB"); negatives count as 0.
std::string format(std::int64_t bytes);
std::string format(std::int64_t bytes, std::string_view decimalSeparator);

// The current locale's decimal separator, "." when it has none.
std::string decimalSeparator();

}
