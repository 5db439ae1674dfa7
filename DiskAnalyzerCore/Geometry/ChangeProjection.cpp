#include "Geometry/ChangeProjection.hpp"

#include <algorithm>

namespace tarnwick {

namespace {

bool isDrawn(const SunburstLayout& layout, NodeID focus)
{
    if (focus == layout.root)
        return true;
    for (const SunburstLayout::Ring& ring : layout.rings) {
        for (const SunburstSector& sector : ring) {
            if (sector.node() == focus)
                return true;
        }
    }
    return false;
}

}

double ChangeProjection::changedFraction(std::int64_t bytes, std::int64_t change)
{
    // In double: bytes - change can pass the 64-bit range for a large shrinkage.
    double size = static_cast<double>(bytes);
    double delta = static_cast<double>(change);
    if (change > 0)
        return std::min(delta / size, 1.0);
    return std::min(-delta / (size - delta), 1.0);
}

std::optional<ChangeProjection> ChangeProjection::project(const SunburstLayout& layout, NodeID focus, const Contains& contains, const Change& change)
{
    if (!isDrawn(layout, focus))
        return std::nullopt;
    ChangeProjection projection;
    for (const SunburstLayout::Ring& ring : layout.rings) {
        for (const SunburstSector& sector : ring) {
            std::optional<NodeID> node = sector.node();
            if (!node || sector.bytes <= 0 || (*node != focus && !contains(focus, *node)))
                continue;
            std::optional<std::int64_t> delta = change(*node);
            if (!delta || *delta == 0)
                continue;
            double fraction = changedFraction(sector.bytes, *delta);
            projection.pieces.push_back(Piece {
                .node = *node,
                .ring = sector.ring,
                .start = sector.end - sector.span() * fraction,
                .end = sector.end,
                .change = *delta,
                .segmentStart = sector.start,
            });
        }
    }
    return projection;
}

}
