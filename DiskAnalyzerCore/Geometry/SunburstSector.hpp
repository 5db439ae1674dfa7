#pragma once

#include "Scanning/NodeID.hpp"

#include <cstdint>
#include <optional>
#include <variant>

namespace tarnwick {

// One drawn piece of a ring. Angles are fractions of a full turn, clockwise from
// twelve o'clock, with start < end.
struct SunburstSector {
    // The children of parent at positions [lower, upper) of its ordered children,
    // drawn together because each alone would be too narrow to see.
    struct SmallObjects {
        NodeID parent;
        std::int32_t lower = 0;
        std::int32_t upper = 0;

        [[nodiscard]] std::int32_t count() const { return upper - lower; }
        bool operator==(const SmallObjects&) const = default;
    };
    // The bytes of parent that none of its children accounts for: in a tree made from a
    // saved day, its files and folders under the snapshot's threshold, together.
    struct Rest {
        NodeID parent;
        bool operator==(const Rest&) const = default;
    };
    // Used space of the volume that the scan did not find.
    struct Unaccounted {
        bool operator==(const Unaccounted&) const = default;
    };
    // Free space the file system keeps back for the system.
    struct Reserved {
        bool operator==(const Reserved&) const = default;
    };
    // Free space of the volume.
    struct Available {
        bool operator==(const Available&) const = default;
    };
    using Content = std::variant<NodeID, SmallObjects, Rest, Unaccounted, Reserved, Available>;

    // Branches are positions among the root's ordered children; sectors that stand for
    // no single branch carry this value.
    static constexpr int noBranch = -1;

    Content content;
    int ring = 0;
    double start = 0;
    double end = 0;
    std::int64_t bytes = 0;
    int branch = noBranch;

    // The tree node of a node sector, absent for every other kind of sector.
    [[nodiscard]] std::optional<NodeID> node() const
    {
        if (const NodeID* id = std::get_if<NodeID>(&content))
            return *id;
        return std::nullopt;
    }
    [[nodiscard]] double span() const { return end - start; }

    bool operator==(const SunburstSector&) const = default;
};

}
