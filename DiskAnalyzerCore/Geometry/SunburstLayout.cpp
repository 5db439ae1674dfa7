#include "Geometry/SunburstLayout.hpp"

#include "Scanning/ScanTree.hpp"
#include "Support/SaturatingMath.hpp"

#include <algorithm>
#include <limits>

namespace tarnwick {

namespace {

// A node sector whose children make up the next ring.
struct Parent {
    NodeID node;
    double start = 0;
    double end = 0;
    std::int64_t bytes = 0;
    int branch = SunburstSector::noBranch;
};

struct RingPass {
    const ScanTree& tree;
    int ring = 0;
    double minimumSpan = 0;
    bool opensNextRing = false;
    SunburstLayout::Ring sectors;
    std::vector<Parent> nextParents;

    // Children come largest first, so the walk stops at the first one too narrow to draw;
    // what follows is at most one sector for the rest, never a visit per hidden child.
    void layChildren(const Parent& parent)
    {
        ScanTree::Children children = tree.children(parent.node);
        const double scale = (parent.end - parent.start) / static_cast<double>(parent.bytes);
        double position = parent.start;
        std::size_t i = 0;
        for (; i < children.size(); ++i) {
            NodeID child = children[i];
            std::int64_t bytes = tree.allocatedSize(child);
            double end = std::min(position + scale * static_cast<double>(bytes), parent.end);
            // A zero-byte child is narrower than any minimum span, and so is everything after it.
            if (scale * static_cast<double>(bytes) < minimumSpan || end <= position)
                break;
            int branch = ring == 0 ? static_cast<int>(i) : parent.branch;
            sectors.push_back(SunburstSector { child, ring, position, end, bytes, branch });
            if (opensNextRing && tree.kind(child) == NodeKind::directory)
                nextParents.push_back(Parent { child, position, end, bytes, branch });
            position = end;
        }
        if (children.size() - i >= 2)
            position = addSmallObjects(parent, children, i, position, scale);
        if (tree.rests())
            addRest(parent, children, position, scale);
    }

    // In a tree made from a saved day, whose folders carry rests, what the kept children leave
    // of the parent's bytes closes its turn, where it is wide enough. A scan's folders hold
    // only their own blocks beyond their children, and those stay a gap.
    void addRest(const Parent& parent, ScanTree::Children children, double position, double scale)
    {
        std::int64_t listed = 0;
        for (NodeID child : children)
            SaturatingMath::add(listed, tree.allocatedSize(child));
        std::int64_t rest = parent.bytes - listed;
        double start = std::max(parent.end - scale * static_cast<double>(rest), position);
        if (rest < 1 || scale * static_cast<double>(rest) < minimumSpan || parent.end <= start)
            return;
        sectors.push_back(SunburstSector { SunburstSector::Rest { parent.node }, ring, start, parent.end, rest, parent.branch });
    }

    // Returns where the next sector starts.
    double addSmallObjects(const Parent& parent, ScanTree::Children children, std::size_t first, double position, double scale)
    {
        std::int64_t sum = 0;
        for (NodeID child : children.subspan(first))
            SaturatingMath::add(sum, tree.allocatedSize(child));
        double span = scale * static_cast<double>(sum);
        double end = std::min(position + span, parent.end);
        if (sum < 1 || span < minimumSpan || end <= position)
            return std::min(position + span, parent.end);
        SunburstSector::SmallObjects rest { parent.node, static_cast<std::int32_t>(first), static_cast<std::int32_t>(children.size()) };
        sectors.push_back(SunburstSector { rest, ring, position, end, sum, SunburstSector::noBranch });
        return end;
    }
};

// The root's share of the turn and the capacity sectors that may follow it in ring 0.
struct Centre {
    double rootEnd = 1;
    std::vector<SunburstSector> capacitySectors;
};

Centre centre(std::int64_t rootBytes, std::optional<VolumeCapacity> capacity)
{
    Centre result;
    if (!capacity)
        return result;
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max() / 4;
    std::int64_t available = std::clamp<std::int64_t>(capacity->available, 0, largest);
    std::int64_t reserved = std::clamp<std::int64_t>(capacity->reserved, 0, largest);
    std::int64_t root = std::min(rootBytes, largest);
    std::int64_t unaccounted = capacity->unaccounted(root);
    std::int64_t total = std::max(root + unaccounted + reserved + available, capacity->total);
    double denominator = static_cast<double>(total);
    result.rootEnd = static_cast<double>(root) / denominator;
    double position = result.rootEnd;
    auto add = [&](SunburstSector::Content content, std::int64_t bytes, bool last) {
        double end = last ? 1.0 : std::min(position + static_cast<double>(bytes) / denominator, 1.0);
        result.capacitySectors.push_back(SunburstSector { content, 0, position, end, bytes, SunburstSector::noBranch });
        position = end;
    };
    add(SunburstSector::Unaccounted {}, unaccounted, false);
    add(SunburstSector::Reserved {}, reserved, false);
    add(SunburstSector::Available {}, available, true);
    return result;
}

}

SunburstLayout SunburstLayout::layout(const ScanTree& tree, NodeID root, int ringCount, int spanDivisor,
    std::optional<VolumeCapacity> capacity, const MinimumSpan& minimumSpan)
{
    SunburstLayout result;
    result.root = root;
    result.rootBytes = tree.allocatedSize(root);
    if (ringCount < 1 || result.rootBytes < 1)
        return result;

    const double baseSpan = static_cast<double>(ringCount) / static_cast<double>(std::max(ringCount, spanDivisor));
    // A root without children has nothing to set the volume's space beside.
    Centre middle = centre(result.rootBytes, tree.childCount(root) > 0 ? capacity : std::nullopt);

    std::vector<Parent> parents { Parent { root, 0.0, middle.rootEnd, result.rootBytes, SunburstSector::noBranch } };
    for (int ring = 0; ring < ringCount && !parents.empty(); ++ring) {
        // std::max keeps the base span when the view answers NaN.
        double wanted = minimumSpan ? minimumSpan(ring) : 0.0;
        RingPass pass { tree, ring, std::max(baseSpan, wanted), ring + 1 < ringCount, {}, {} };
        for (const Parent& parent : parents)
            pass.layChildren(parent);
        if (ring == 0) {
            for (const SunburstSector& sector : middle.capacitySectors) {
                if (sector.span() >= pass.minimumSpan)
                    pass.sectors.push_back(sector);
            }
            std::stable_sort(pass.sectors.begin(), pass.sectors.end(),
                [](const SunburstSector& a, const SunburstSector& b) { return a.start < b.start; });
        }
        if (pass.sectors.empty())
            break;
        result.rings.push_back(std::move(pass.sectors));
        parents = std::move(pass.nextParents);
    }
    return result;
}

std::optional<SunburstSector> SunburstLayout::sector(int ring, double fraction) const
{
    if (ring < 0 || static_cast<std::size_t>(ring) >= rings.size())
        return std::nullopt;
    const Ring& sectors = rings[static_cast<std::size_t>(ring)];
    auto after = std::upper_bound(sectors.begin(), sectors.end(), fraction,
        [](double value, const SunburstSector& sector) { return value < sector.start; });
    if (after == sectors.begin())
        return std::nullopt;
    const SunburstSector& candidate = *(after - 1);
    if (fraction < candidate.end)
        return candidate;
    return std::nullopt;
}

}
