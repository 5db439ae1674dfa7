#include "Geometry/SunburstGeometry.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tarnwick {

namespace {

double finiteOrZero(double value)
{
    return std::isfinite(value) ? value : 0.0;
}

// The centre disc takes about a quarter of the radius, but never less than what a
// name and a size need, unless the view is smaller than that.
constexpr double centerShare = 0.24;
constexpr double smallestCenterRadius = 56;
// The largest fraction below 1, so that a hit never reads as a full turn.
constexpr double largestFraction = 0.9999999999999999;

}

SunburstGeometry SunburstGeometry::geometry(int maxRings, double width, double height, double minimumRingWidth, double inset)
{
    width = std::max(finiteOrZero(width), 0.0);
    height = std::max(finiteOrZero(height), 0.0);
    SunburstGeometry result;
    result.center = Point { width / 2, height / 2 };
    double radius = std::max(std::min(width, height) * 0.5 - finiteOrZero(inset), 0.0);
    result.centerRadius = std::min(std::max(radius * centerShare, smallestCenterRadius), radius);
    minimumRingWidth = finiteOrZero(minimumRingWidth);
    if (minimumRingWidth > 0) {
        double fitting = std::floor((radius - result.centerRadius) / minimumRingWidth);
        double rings = std::max(std::min(static_cast<double>(maxRings), fitting), 0.0);
        result.ringCount = static_cast<int>(rings);
        if (result.ringCount >= 1)
            result.ringWidth = (radius - result.centerRadius) / result.ringCount;
    }
    return result;
}

SunburstGeometry::Hit SunburstGeometry::hit(Point point) const
{
    double dx = point.x - center.x;
    double dy = point.y - center.y;
    double distance = std::hypot(dx, dy);
    if (!std::isfinite(distance))
        return Hit::outside();
    if (distance <= centerRadius)
        return Hit::center();
    if (ringWidth <= 0)
        return Hit::outside();
    double ring = std::floor((distance - centerRadius) / ringWidth);
    if (!(ring < ringCount))
        return Hit::outside();
    // atan2(dx, -dy) is 0 at twelve o'clock and grows clockwise because y grows downwards.
    double angle = std::atan2(dx, -dy);
    if (angle < 0)
        angle += 2 * std::numbers::pi;
    double fraction = std::min(angle / (2 * std::numbers::pi) + 0.0, largestFraction);
    return Hit::ring(static_cast<int>(ring), fraction);
}

}
