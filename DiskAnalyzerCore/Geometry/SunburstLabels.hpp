#pragma once

#include "Geometry/SunburstGeometry.hpp"
#include "Geometry/SunburstLayout.hpp"
#include "Scanning/NodeID.hpp"

#include <functional>
#include <vector>

namespace tarnwick {

// Where the names of a ring map go. A name that fits inside its sector, whole, runs along the
// ring there; the largest sectors whose names don't fit get them beside the map, level, with a
// leader line that leaves the sector outwards and runs around the rings, never across them.
// Names are never cut: a name beside the map is given a width to fit, and the painter
// shortens it in the middle when it is wider.
struct SunburstLabels {
    struct Rect {
        double x = 0;
        double y = 0;
        double width = 0;
        double height = 0;

        [[nodiscard]] double right() const { return x + width; }
        [[nodiscard]] double bottom() const { return y + height; }
        [[nodiscard]] bool intersects(const Rect& other) const
        {
            return x < other.right() && other.x < right() && y < other.bottom() && other.y < bottom();
        }
        bool operator==(const Rect&) const = default;
    };

    // A name along the ring: centred on a point, turned by degrees clockwise so that it reads
    // from left to right and never stands on its head.
    struct Inside {
        NodeID node;
        SunburstGeometry::Point center;
        double degrees = 0;
        double width = 0; // of the whole name
        bool operator==(const Inside&) const = default;
    };
    enum class Side { left, right };
    // A name beside the map, in its box, with the leader's points from the sector outwards.
    struct Outside {
        NodeID node;
        Rect box;
        Side side = Side::right;
        std::vector<SunburstGeometry::Point> leader;
        bool operator==(const Outside&) const = default;
    };

    // How wide a sector's name is in the label font, and the line's height.
    struct Metrics {
        std::function<double(NodeID)> width;
        double lineHeight = 12;
        // The narrowest width a name beside the map is shortened to; below it the name is left out.
        double shortestWidth = 48;
    };

    // Sectors narrower than this share of a turn get no name beside the map.
    static constexpr double smallestOutsideSpan = 0.012;
    static constexpr int mostOutside = 12;
    // Space between the outermost ring and the leader's run around it, and between lines and text.
    static constexpr double gap = 6;

    std::vector<Inside> inside;
    std::vector<Outside> outside;

    // Places the names of the layout's node sectors, largest sectors first, inside a view of
    // width x height.
    static SunburstLabels place(const SunburstLayout& layout, const SunburstGeometry& geometry, double width, double height,
        const Metrics& metrics);
};

}
