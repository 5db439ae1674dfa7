#pragma once

#include "Geometry/SunburstSector.hpp"
#include "Geometry/VolumeCapacity.hpp"
#include "Scanning/NodeID.hpp"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace tarnwick {

class ScanTree;

// Which sectors of a tree the ring map draws, ring by ring, at which angles. Pure
// arithmetic on the finished tree: the view only scales it to pixels and paints it.
struct SunburstLayout {
    using Ring = std::vector<SunburstSector>;
    // The narrowest sector the view will draw in a ring, as a fraction of a turn.
    using MinimumSpan = std::function<double(int ring)>;

    NodeID root;
    std::int64_t rootBytes = 0; // the root's size on disk
    std::vector<Ring> rings;    // ring 0 first; each ring ordered by start

    // Lays out up to ringCount rings around root. Every ring's minimum span is at least
    // ringCount / max(ringCount, spanDivisor) of a turn (the view passes 1500). With a
    // capacity, the root's share of the volume leaves room in ring 0 for the used space
    // the scan did not account for and for the free space.
    static SunburstLayout layout(const ScanTree& tree, NodeID root, int ringCount, int spanDivisor,
        std::optional<VolumeCapacity> capacity, const MinimumSpan& minimumSpan);

    // The sector of a ring that covers a fraction of a turn; absent in a gap or past the rings.
    [[nodiscard]] std::optional<SunburstSector> sector(int ring, double fraction) const;

    bool operator==(const SunburstLayout&) const = default;
};

}
