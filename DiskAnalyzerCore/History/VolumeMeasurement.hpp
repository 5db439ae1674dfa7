#pragma once

#include "Scanning/TreeDate.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

// A volume's capacity and available space at one moment, and the scanned total when the
// measurement came with a scan.
struct VolumeMeasurement {
    Date date {}; // held to whole microseconds (HistoryDate)
    std::int64_t total = 0;
    std::int64_t available = 0;
    std::optional<std::int64_t> scanned;

    bool operator==(const VolumeMeasurement&) const = default;

    // The volume log holds one measurement a line: the date as seconds since 2001-01-01 UTC
    // (a fraction only when there is one), capacity, available space and, when known, the
    // scanned total, separated by single spaces and ended by a line feed:
    //
    //     770000000 994662584320 412004487168 87000000000
    //     770086400.25 994662584320 409112000000
    //
    // The second line is a measurement without a scan, taken a quarter second after a day.
    [[nodiscard]] std::string logLine() const;
    // Absent for a line that is not one measurement (cut short, written by something else, or
    // with a negative byte count).
    static std::optional<VolumeMeasurement> parseLogLine(std::string_view line);
    // Every well-formed line of a log, in file order; bad lines are skipped so that one
    // damaged line does not hide a volume's whole record.
    static std::vector<VolumeMeasurement> parseLog(std::string_view text);

    // The log file name inside the "Volumes" folder: every "/" and ":" of the identifier
    // becomes "_", then ".log".
    static std::string logFileName(std::string_view volume);
};

}
