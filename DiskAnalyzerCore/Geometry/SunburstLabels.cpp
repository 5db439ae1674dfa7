#include "Geometry/SunburstLabels.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

namespace tarnwick {

namespace {

using Point = SunburstGeometry::Point;

// Space kept between a name and the edges of its sector.
constexpr double padding = 3;
// The leader follows the rings in steps no longer than this share of a turn, so that no
// step cuts into the outermost ring.
constexpr double arcStep = 0.01;

Point pointAt(const SunburstGeometry& geometry, double radius, double fraction)
{
    double angle = fraction * 2 * std::numbers::pi;
    return { geometry.center.x + radius * std::sin(angle), geometry.center.y - radius * std::cos(angle) };
}

double fractionOf(const SunburstGeometry& geometry, Point point)
{
    double angle = std::atan2(point.x - geometry.center.x, geometry.center.y - point.y);
    if (angle < 0)
        angle += 2 * std::numbers::pi;
    return angle / (2 * std::numbers::pi);
}

// The widest straight name, centred at radius, that stays inside a sector of the given
// span between inner and outer.
double roomAt(double radius, double inner, double outer, double span, double lineHeight)
{
    double low = radius - lineHeight / 2;
    double high = radius + lineHeight / 2;
    if (low < inner + padding || high > outer - padding)
        return 0;
    double radial = 2 * std::sqrt((outer - padding) * (outer - padding) - high * high);
    double halfAngle = span * std::numbers::pi - padding / low;
    if (halfAngle <= 0)
        return 0;
    if (halfAngle >= std::numbers::pi / 2)
        return radial;
    return std::min(radial, 2 * low * std::tan(halfAngle));
}

std::optional<SunburstLabels::Inside> insideLabel(const SunburstSector& sector, const SunburstGeometry& geometry, double nameWidth,
    double lineHeight)
{
    double inner = geometry.centerRadius + sector.ring * geometry.ringWidth;
    double outer = inner + geometry.ringWidth;
    // Centred in the ring looks best; nearer the inner edge gives a long name more room.
    for (double radius : { (inner + outer) / 2, inner + padding + lineHeight / 2 }) {
        if (nameWidth > roomAt(radius, inner, outer, sector.span(), lineHeight))
            continue;
        double middle = (sector.start + sector.end) / 2;
        double degrees = middle * 360.0;
        if (middle > 0.25 && middle < 0.75)
            degrees += 180.0;
        return SunburstLabels::Inside { *sector.node(), pointAt(geometry, radius, middle), degrees, nameWidth };
    }
    return std::nullopt;
}

struct Wanted {
    const SunburstSector* sector = nullptr;
    double nameWidth = 0;
    double y = 0; // the centre of its line
};

// Moves the lines of one side apart, in the order of their wanted heights, keeping them
// inside the view; drops the narrowest sectors' names when they cannot all fit.
std::vector<Wanted> spread(std::vector<Wanted> side, double height, double lineHeight)
{
    double pitch = lineHeight + 2;
    auto fitting = static_cast<std::size_t>(std::max((height - 4) / pitch, 0.0));
    if (side.size() > fitting) {
        std::stable_sort(side.begin(), side.end(), [](const Wanted& a, const Wanted& b) { return a.sector->span() > b.sector->span(); });
        side.resize(fitting);
    }
    std::sort(side.begin(), side.end(), [](const Wanted& a, const Wanted& b) { return a.y < b.y; });
    double lowest = 2 + lineHeight / 2;
    for (Wanted& wanted : side) {
        wanted.y = std::max(wanted.y, lowest);
        lowest = wanted.y + pitch;
    }
    double highest = height - 2 - lineHeight / 2;
    for (auto it = side.rbegin(); it != side.rend(); ++it) {
        it->y = std::min(it->y, highest);
        highest = it->y - pitch;
    }
    return side;
}

// How far from the centre, across, the level line at height y clears a circle.
double clearance(double radius, double dy)
{
    return dy < radius ? std::sqrt(radius * radius - dy * dy) : 0.0;
}

std::optional<SunburstLabels::Outside> outsideLabel(const Wanted& wanted, SunburstLabels::Side side, const SunburstGeometry& geometry,
    double rim, double width, const SunburstLabels::Metrics& metrics)
{
    const SunburstSector& sector = *wanted.sector;
    double h = metrics.lineHeight;
    double cx = geometry.center.x;
    double cy = geometry.center.y;
    double top = wanted.y - h / 2;
    double nearest = (top <= cy && cy <= top + h) ? 0.0 : std::min(std::abs(top - cy), std::abs(top + h - cy));
    double boxEdge = clearance(rim, nearest) + SunburstLabels::gap;
    bool right = side == SunburstLabels::Side::right;
    double room = right ? width - 2 - (cx + boxEdge) : cx - boxEdge - 2;
    double boxWidth = std::min(wanted.nameWidth, room);
    if (boxWidth < std::min(wanted.nameWidth, metrics.shortestWidth))
        return std::nullopt;
    SunburstLabels::Rect box { right ? cx + boxEdge : cx - boxEdge - boxWidth, top, boxWidth, h };

    double middle = (sector.start + sector.end) / 2;
    double sectorOuter = geometry.centerRadius + (sector.ring + 1) * geometry.ringWidth;
    std::vector<Point> leader { pointAt(geometry, sectorOuter - 2, middle), pointAt(geometry, rim, middle) };
    // Around the rings to where the line's level meets them, or over the top or bottom.
    Point elbow { right ? cx + clearance(rim, std::abs(wanted.y - cy)) : cx - clearance(rim, std::abs(wanted.y - cy)), wanted.y };
    bool beyond = std::abs(wanted.y - cy) >= rim;
    double target = beyond ? (wanted.y < cy ? 0.0 : 0.5) : fractionOf(geometry, elbow);
    if (!right && target < 0.5)
        target += 1.0; // the left half runs from a half turn to a full one
    int steps = static_cast<int>(std::ceil(std::abs(target - middle) / arcStep));
    for (int step = 1; step <= steps; ++step)
        leader.push_back(pointAt(geometry, rim, middle + (target - middle) * step / steps));
    if (beyond)
        leader.push_back({ cx, wanted.y });
    leader.push_back({ right ? box.x - 2 : box.right() + 2, wanted.y });
    return SunburstLabels::Outside { *sector.node(), box, side, std::move(leader) };
}

}

SunburstLabels SunburstLabels::place(const SunburstLayout& layout, const SunburstGeometry& geometry, double width, double height,
    const Metrics& metrics)
{
    SunburstLabels labels;
    if (geometry.ringWidth <= 0 || layout.rings.empty())
        return labels;
    std::vector<const SunburstSector*> sectors;
    for (const SunburstLayout::Ring& ring : layout.rings) {
        for (const SunburstSector& sector : ring) {
            if (sector.node())
                sectors.push_back(&sector);
        }
    }
    std::stable_sort(sectors.begin(), sectors.end(), [](const auto* a, const auto* b) { return a->span() > b->span(); });

    double rim = geometry.centerRadius + static_cast<double>(layout.rings.size()) * geometry.ringWidth + gap;
    std::vector<Wanted> left;
    std::vector<Wanted> right;
    for (const SunburstSector* sector : sectors) {
        double nameWidth = metrics.width(*sector->node());
        if (std::optional<Inside> label = insideLabel(*sector, geometry, nameWidth, metrics.lineHeight)) {
            labels.inside.push_back(*label);
            continue;
        }
        if (sector->span() < smallestOutsideSpan || left.size() + right.size() >= mostOutside)
            continue;
        double middle = (sector->start + sector->end) / 2;
        Wanted wanted { sector, nameWidth, pointAt(geometry, rim, middle).y };
        (middle < 0.5 ? right : left).push_back(wanted);
    }
    for (auto [wanted, side] : { std::pair { &right, Side::right }, std::pair { &left, Side::left } }) {
        for (const Wanted& line : spread(std::move(*wanted), height, metrics.lineHeight)) {
            if (std::optional<Outside> label = outsideLabel(line, side, geometry, rim, width, metrics))
                labels.outside.push_back(std::move(*label));
        }
    }
    return labels;
}

}
