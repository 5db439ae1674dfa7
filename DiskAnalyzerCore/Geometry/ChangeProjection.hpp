#pragma once

#include "Geometry/SunburstLayout.hpp"
#include "Scanning/NodeID.hpp"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace tarnwick {

// How a comparison of two snapshots shows on the map: every changed place that has a
// sector gets a piece at the clockwise end of that sector, sized by its share of change.
struct ChangeProjection {
    struct Piece {
        NodeID node;
        int ring = 0;
        double start = 0;
        double end = 0;
        std::int64_t change = 0; // signed bytes: growth is positive
        double segmentStart = 0; // where the whole sector starts, for drawing the unchanged part

        bool operator==(const Piece&) const = default;
    };

    // Whether node lies inside focus; the comparison knows which places it holds.
    using Contains = std::function<bool(NodeID focus, NodeID node)>;
    // The signed change of a place in bytes; absent when the comparison does not know it.
    using Change = std::function<std::optional<std::int64_t>(NodeID node)>;

    std::vector<Piece> pieces; // in ring order, then sector order

    // Absent when focus is neither the layout's root nor drawn as a sector.
    static std::optional<ChangeProjection> project(const SunburstLayout& layout, NodeID focus, const Contains& contains, const Change& change);

    // The part of a sector's bytes that a change stands for: of the size now for growth,
    // of the former size for shrinkage; at most 1.
    static double changedFraction(std::int64_t bytes, std::int64_t change);

    bool operator==(const ChangeProjection&) const = default;
};

}
