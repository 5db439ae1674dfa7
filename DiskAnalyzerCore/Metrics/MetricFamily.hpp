#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick {

// One metric of the exposition format: its name, what it means, and one sample per set of
// label values. Every figure Tarnwick exports is a whole number of its base unit (bytes,
// seconds, a count, 0 or 1), so samples hold integers and never print in exponent form.
struct MetricFamily {
    enum class Type { gauge };

    struct Sample {
        std::vector<std::pair<std::string, std::string>> labels; // name, value; in output order
        std::int64_t value = 0;

        bool operator==(const Sample&) const = default;
    };

    std::string name; // "tarnwick_disk_available_bytes"
    std::string help;
    Type type = Type::gauge;
    std::vector<Sample> samples;

    bool operator==(const MetricFamily&) const = default;
};

}
