#pragma once

#include "Scanning/TreeDate.hpp"

#include <optional>
#include <string>

namespace tarnwick {

// The state of one alert at its latest measurement.
struct AlertReading {
    enum class State { below, exceeded, unknown };
    // Why a reading is unknown.
    enum class Unknown {
        diskNotMounted,
        notMeasuredYet,  // no snapshot of the folder's disk keeps the folder
        capacityUnknown, // a share, with no capacity of the folder's disk on record
    };

    State state = State::unknown;
    // In the condition's unit: percent for diskUsed and share, bytes for size and growth.
    std::optional<double> value;
    std::optional<Date> measuredAt;
    // For growth: the date of the snapshot the growth is counted from.
    std::optional<Date> since;
    // One of the two compared scans did not read the folder fully.
    bool uncertain = false;
    std::optional<Unknown> unknownReason;

    static AlertReading unknown(Unknown reason) { return { State::unknown, {}, {}, {}, false, reason }; }

    // What a list shows beside the value: why it is unknown, or ", uncertain: ..." for an
    // uncertain reading; empty otherwise.
    [[nodiscard]] std::string note() const;

    bool operator==(const AlertReading&) const = default;
};

}
