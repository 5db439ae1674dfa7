#pragma once

#include "Metrics/MetricFamily.hpp"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tarnwick {

// The figures Tarnwick exports from its history, printed, or written into a folder for a
// collector to read.
struct MetricsAnswer {
    struct Printed {};
    // The file written, and the setting that has the app rewrite it after every snapshot.
    struct Written {
        std::string folder;
        std::string file;
        std::optional<std::string> unsavedBecause; // why the setting couldn't be saved
    };
    // The setting was turned off: the app no longer writes the file.
    struct StoppedWriting {};

    std::vector<MetricFamily> families;
    std::variant<Printed, Written, StoppedWriting> outcome;
};

}
