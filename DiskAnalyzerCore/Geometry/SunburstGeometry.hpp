#pragma once

namespace tarnwick {

// How the rings of the map fit a view: a centre disc and equally wide rings around it.
// Coordinates are the view's, with y growing downwards.
struct SunburstGeometry {
    struct Point {
        double x = 0;
        double y = 0;

        bool operator==(const Point&) const = default;
    };

    // What a point of the view falls on.
    struct Hit {
        enum class Kind { ring, center, outside };

        Kind kind = Kind::outside;
        int index = 0;       // the ring, for Kind::ring
        double fraction = 0; // of a turn clockwise from twelve o'clock, below 1, for Kind::ring

        static Hit ring(int index, double fraction) { return Hit { Kind::ring, index, fraction }; }
        static Hit center() { return Hit { Kind::center, 0, 0 }; }
        static Hit outside() { return Hit { Kind::outside, 0, 0 }; }
        bool operator==(const Hit&) const = default;
    };

    Point center;
    double centerRadius = 0;
    double ringWidth = 0;
    int ringCount = 0;

    // As many rings as fit at minimumRingWidth, at most maxRings, in a width x height view
    // less inset on every side. Sizes that are negative or not finite count as 0.
    static SunburstGeometry geometry(int maxRings, double width, double height, double minimumRingWidth, double inset);

    [[nodiscard]] Hit hit(Point point) const;

    bool operator==(const SunburstGeometry&) const = default;
};

}
