#include "Geometry/SunburstLayout.hpp"

#include "Scanning/ScanTree.hpp"
#include "Scanning/TreeBuilder.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

using namespace tarnwick;

namespace {

constexpr std::int64_t GB = 1'000'000'000;

TreeBuilder::Entry file(std::string_view name, std::optional<std::int64_t> size)
{
    return TreeBuilder::Entry { .name = name, .kind = NodeKind::file, .allocatedSize = size, .logicalSize = size };
}

TreeBuilder::Entry container(std::string_view name, NodeKind kind = NodeKind::directory)
{
    return TreeBuilder::Entry { .name = name, .kind = kind };
}

std::shared_ptr<const ScanTree> finish(TreeBuilder& builder)
{
    return std::move(builder).finalize("/r", ScanCoverage::whole(), TreeBuilder::Metadata::included);
}

SunburstLayout::MinimumSpan span(double value)
{
    return [value](int) { return value; };
}

SunburstLayout layOut(const ScanTree& tree, int rings, double minimumSpan = 0, std::optional<VolumeCapacity> capacity = std::nullopt)
{
    return SunburstLayout::layout(tree, NodeID::root(), rings, 1500, capacity, span(minimumSpan));
}

// A root whose files take the given shares of 100,000 bytes; the rest is counted without nodes.
std::shared_ptr<const ScanTree> rootWithShares(const std::vector<std::int64_t>& sizes)
{
    TreeBuilder b("r", NodeKind::directory, std::nullopt);
    std::int64_t rest = 100'000;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        std::string name = "f" + std::to_string(100 + i);
        b.addNode(NodeID::root(), file(name, sizes[i]));
        rest -= sizes[i];
    }
    b.addSizesWithoutNodes(NodeID::root(), rest, rest, false);
    return finish(b);
}

}

TEST(SunburstLayout, EmptyLayouts)
{
    TreeBuilder noBytes("r", NodeKind::directory, std::nullopt);
    noBytes.addNode(NodeID::root(), file("empty", 0));
    auto empty = finish(noBytes);
    EXPECT_TRUE(layOut(*empty, 8).rings.empty());
    EXPECT_TRUE(layOut(*empty, 8, 0, VolumeCapacity { 1000, 500 }).rings.empty());

    auto tree = rootWithShares({ 60'000 });
    EXPECT_TRUE(layOut(*tree, 0).rings.empty());
    EXPECT_TRUE(layOut(*tree, -3).rings.empty());
    EXPECT_EQ(layOut(*tree, 0).rootBytes, 100'000);
    EXPECT_EQ(layOut(*tree, 1).rings.size(), 1u);

    // A root without children shows no volume sectors either: there is nothing to set them beside.
    TreeBuilder lone("r", NodeKind::file, std::nullopt);
    auto file = finish(lone);
    EXPECT_TRUE(layOut(*file, 8, 0, VolumeCapacity { 1000, 500 }).rings.empty());
}

TEST(SunburstLayout, VolumeShowsUnaccountedAndAvailableSpace)
{
    TreeBuilder b("disk", NodeKind::directory, std::nullopt);
    b.addNode(NodeID::root(), file("big", 300 * GB));
    b.addNode(NodeID::root(), file("small", 100 * GB));
    auto tree = finish(b);

    SunburstLayout layout = layOut(*tree, 8, 0, VolumeCapacity { 1000 * GB, 500 * GB });
    ASSERT_EQ(layout.rings.size(), 1u);
    const SunburstLayout::Ring& ring = layout.rings[0];
    ASSERT_EQ(ring.size(), 4u);
    EXPECT_EQ(ring[0].node(), NodeID { 1 });
    EXPECT_NEAR(ring[0].start, 0.0, 1e-12);
    EXPECT_NEAR(ring[0].end, 0.3, 1e-12);
    EXPECT_EQ(ring[0].branch, 0);
    EXPECT_EQ(ring[1].node(), NodeID { 2 });
    EXPECT_NEAR(ring[1].end, 0.4, 1e-12);
    EXPECT_EQ(ring[1].branch, 1);
    EXPECT_EQ(ring[2].content, SunburstSector::Content { SunburstSector::Unaccounted {} });
    EXPECT_NEAR(ring[2].start, 0.4, 1e-12);
    EXPECT_NEAR(ring[2].end, 0.5, 1e-12);
    EXPECT_EQ(ring[2].bytes, 100 * GB);
    EXPECT_EQ(ring[2].branch, SunburstSector::noBranch);
    EXPECT_EQ(ring[3].content, SunburstSector::Content { SunburstSector::Available {} });
    EXPECT_NEAR(ring[3].start, 0.5, 1e-12);
    EXPECT_EQ(ring[3].end, 1.0);
    EXPECT_EQ(ring[3].bytes, 500 * GB);

    // Without the capacity, the same children share the whole turn.
    SunburstLayout folder = layOut(*tree, 8);
    ASSERT_EQ(folder.rings[0].size(), 2u);
    EXPECT_NEAR(folder.rings[0][0].end, 0.75, 1e-12);
    EXPECT_EQ(folder.rings[0][1].end, 1.0);
}

TEST(SunburstLayout, CapacityEdgeCases)
{
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    TreeBuilder b("disk", NodeKind::directory, std::nullopt);
    b.addNode(NodeID::root(), file("data", 400 * GB));
    auto tree = finish(b);

    struct Case {
        const char* what;
        VolumeCapacity capacity;
        double rootEnd;
        std::optional<std::int64_t> unaccounted; // absent: no sector
        std::optional<std::int64_t> available;
    };
    const Case cases[] {
        { "negative available counts as none", { 1000 * GB, -5 }, 0.4, 600 * GB, std::nullopt },
        { "a total below used plus free is raised to it", { 0, 600 * GB }, 0.4, std::nullopt, 600 * GB },
        { "free space that would overflow is capped", { 0, largest }, 400.0 * GB / static_cast<double>(largest), std::nullopt, largest - 400 * GB },
        { "a full volume", { 400 * GB, 0 }, 1.0, std::nullopt, std::nullopt },
    };
    for (const Case& c : cases) {
        SunburstLayout layout = layOut(*tree, 8, 0, c.capacity);
        ASSERT_FALSE(layout.rings.empty()) << c.what;
        std::optional<std::int64_t> unaccounted;
        std::optional<std::int64_t> available;
        double rootEnd = 0;
        for (const SunburstSector& sector : layout.rings[0]) {
            EXPECT_LT(sector.start, sector.end) << c.what;
            if (std::holds_alternative<SunburstSector::Unaccounted>(sector.content))
                unaccounted = sector.bytes;
            else if (std::holds_alternative<SunburstSector::Available>(sector.content))
                available = sector.bytes;
            else
                rootEnd = std::max(rootEnd, sector.end);
        }
        if (c.rootEnd > 0.001) {
            EXPECT_NEAR(rootEnd, c.rootEnd, 1e-12) << c.what;
        }
        EXPECT_EQ(unaccounted, c.unaccounted) << c.what;
        EXPECT_EQ(available, c.available) << c.what;
    }
}

TEST(SunburstLayout, SmallObjectsSector)
{
    struct Case {
        const char* what;
        std::vector<std::int64_t> sizes;
        std::size_t sectors;
        std::optional<SunburstSector::SmallObjects> rest;
        std::int64_t restBytes;
    };
    std::vector<std::int64_t> tenSmall(1, 50'000);
    tenSmall.insert(tenSmall.end(), 10, 500);
    const Case cases[] {
        { "two leftovers below the minimum together", { 50'000, 100, 100 }, 1, std::nullopt, 0 },
        { "ten leftovers that add up", tenSmall, 2, SunburstSector::SmallObjects { NodeID::root(), 1, 11 }, 5'000 },
        { "a single leftover is dropped", { 50'000, 900 }, 1, std::nullopt, 0 },
        { "leftovers without bytes", { 50'000, 0, 0 }, 1, std::nullopt, 0 },
    };
    for (const Case& c : cases) {
        auto tree = rootWithShares(c.sizes);
        SunburstLayout layout = layOut(*tree, 3, 0.01);
        ASSERT_EQ(layout.rings.size(), 1u) << c.what;
        const SunburstLayout::Ring& ring = layout.rings[0];
        ASSERT_EQ(ring.size(), c.sectors) << c.what;
        EXPECT_NEAR(ring[0].end, 0.5, 1e-12) << c.what;
        if (c.rest) {
            EXPECT_EQ(ring[1].content, SunburstSector::Content { *c.rest }) << c.what;
            EXPECT_EQ(ring[1].bytes, c.restBytes) << c.what;
            EXPECT_NEAR(ring[1].start, 0.5, 1e-12) << c.what;
            EXPECT_NEAR(ring[1].end, 0.55, 1e-12) << c.what;
            EXPECT_EQ(ring[1].branch, SunburstSector::noBranch) << c.what;
        }
    }
}

TEST(SunburstLayout, MinimumSpanIsTheLargerOfBaseAndView)
{
    // 8 rings give a base of 8/1500 of a turn: 8,000 of 1,500,000 bytes.
    TreeBuilder b("r", NodeKind::directory, std::nullopt);
    b.addNode(NodeID::root(), file("big", 1'484'000));
    b.addNode(NodeID::root(), file("above", 8'001));
    b.addNode(NodeID::root(), file("below", 7'999));
    auto tree = finish(b);

    using Content = SunburstSector::Content;
    using SmallObjects = SunburstSector::SmallObjects;
    EXPECT_EQ(layOut(*tree, 8).rings[0].size(), 2u);
    EXPECT_EQ(layOut(*tree, 8, std::nan("")).rings[0].size(), 2u);
    EXPECT_EQ(layOut(*tree, 7).rings[0].size(), 3u);
    // Too narrow alone, wide enough together.
    SunburstLayout wider = layOut(*tree, 8, 0.006);
    ASSERT_EQ(wider.rings[0].size(), 2u);
    EXPECT_EQ(wider.rings[0][1].content, (Content { SmallObjects { NodeID::root(), 1, 3 } }));
    // At the divisor every sector needs the whole turn: only all children together have it.
    SunburstLayout whole = layOut(*tree, 1500);
    ASSERT_EQ(whole.rings.size(), 1u);
    ASSERT_EQ(whole.rings[0].size(), 1u);
    EXPECT_EQ(whole.rings[0][0].content, (Content { SmallObjects { NodeID::root(), 0, 3 } }));
    EXPECT_EQ(whole.rings[0][0].end, 1.0);

    // The view may ask for a different span in each ring.
    TreeBuilder nested("r", NodeKind::directory, std::nullopt);
    NodeID folder = nested.addNode(NodeID::root(), container("d"));
    nested.addNode(folder, file("x", 60));
    nested.addNode(folder, file("y", 20));
    nested.addNode(folder, file("z", 20));
    auto deep = finish(nested);
    SunburstLayout layout = SunburstLayout::layout(*deep, NodeID::root(), 3, 1500, std::nullopt, [](int ring) { return ring == 1 ? 0.3 : 0.0; });
    ASSERT_EQ(layout.rings.size(), 2u);
    ASSERT_EQ(layout.rings[1].size(), 2u);
    EXPECT_EQ(layout.rings[1][1].content, (SunburstSector::Content { SunburstSector::SmallObjects { folder, 1, 3 } }));
}

TEST(SunburstLayout, DeeperRingsNestInsideTheirParentsAndKeepTheBranch)
{
    TreeBuilder b("r", NodeKind::directory, std::nullopt);
    NodeID a = b.addNode(NodeID::root(), container("a"));
    NodeID bee = b.addNode(NodeID::root(), container("b"));
    NodeID a1 = b.addNode(a, file("a1", 400));
    NodeID b1 = b.addNode(bee, container("b1"));
    NodeID a2 = b.addNode(a, file("a2", 200));
    NodeID b11 = b.addNode(b1, file("b11", 400));
    auto tree = finish(b);

    SunburstLayout layout = layOut(*tree, 3);
    ASSERT_EQ(layout.rings.size(), 3u);
    auto expectSector = [](const SunburstSector& sector, NodeID node, double start, double end, int branch, int ring) {
        EXPECT_EQ(sector.node(), node);
        EXPECT_NEAR(sector.start, start, 1e-12);
        EXPECT_NEAR(sector.end, end, 1e-12);
        EXPECT_EQ(sector.branch, branch);
        EXPECT_EQ(sector.ring, ring);
    };
    ASSERT_EQ(layout.rings[1].size(), 3u);
    expectSector(layout.rings[0][0], a, 0.0, 0.6, 0, 0);
    expectSector(layout.rings[0][1], bee, 0.6, 1.0, 1, 0);
    expectSector(layout.rings[1][0], a1, 0.0, 0.4, 0, 1);
    expectSector(layout.rings[1][1], a2, 0.4, 0.6, 0, 1);
    expectSector(layout.rings[1][2], b1, 0.6, 1.0, 1, 1);
    ASSERT_EQ(layout.rings[2].size(), 1u);
    expectSector(layout.rings[2][0], b11, 0.6, 1.0, 1, 2);

    EXPECT_EQ(layOut(*tree, 2).rings.size(), 2u);
    // Laid out from a folder, the folder's children form ring 0 with their own branches.
    SunburstLayout fromB = SunburstLayout::layout(*tree, bee, 8, 1500, std::nullopt, span(0));
    EXPECT_EQ(fromB.root, bee);
    EXPECT_EQ(fromB.rootBytes, 400);
    ASSERT_EQ(fromB.rings.size(), 2u);
    expectSector(fromB.rings[1][0], b11, 0.0, 1.0, 0, 1);
}

TEST(SunburstLayout, PackagesAndOtherLeavesGetNoRingOfChildren)
{
    TreeBuilder b("r", NodeKind::directory, std::nullopt);
    NodeID folder = b.addNode(NodeID::root(), container("folder"));
    NodeID package = b.addNode(NodeID::root(), container("App.app", NodeKind::package));
    b.addNode(folder, file("inside", 100));
    b.addNode(package, file("binary", 100));
    b.addNode(NodeID::root(), file("file", 100));
    auto tree = finish(b);

    SunburstLayout layout = layOut(*tree, 8);
    ASSERT_EQ(layout.rings.size(), 2u);
    ASSERT_EQ(layout.rings[0].size(), 3u);
    EXPECT_EQ(layout.rings[0][0].node(), package); // "App.app" sorts first at equal sizes
    ASSERT_EQ(layout.rings[1].size(), 1u);
    EXPECT_EQ(layout.rings[1][0].node(), NodeID { 3 });
    EXPECT_EQ(tree->parent(NodeID { 3 }), folder);
}

TEST(SunburstLayout, SaturatedTotalsStayInsideTheTurn)
{
    constexpr std::int64_t half = std::numeric_limits<std::int64_t>::max() / 2 + 1;
    TreeBuilder b("r", NodeKind::directory, std::nullopt);
    b.addNode(NodeID::root(), file("one", half));
    b.addNode(NodeID::root(), file("two", half));
    b.addNode(NodeID::root(), file("three", half));
    auto tree = finish(b);

    SunburstLayout layout = layOut(*tree, 8);
    ASSERT_EQ(layout.rings.size(), 1u);
    ASSERT_EQ(layout.rings[0].size(), 2u);
    for (const SunburstSector& sector : layout.rings[0]) {
        EXPECT_LT(sector.start, sector.end);
        EXPECT_LE(sector.end, 1.0);
    }
}

// Structural checks on a random tree: what a drawing of any tree relies on.
TEST(SunburstLayout, RandomTreesKeepRingInvariants)
{
    for (unsigned seed = 1; seed <= 20; ++seed) {
        std::mt19937 random(seed);
        TreeBuilder b("r", NodeKind::directory, std::nullopt);
        std::vector<NodeID> folders { NodeID::root() };
        for (int i = 0; i < 600; ++i) {
            NodeID parent = folders[random() % folders.size()];
            std::string name = "n" + std::to_string(i);
            switch (random() % 6) {
            case 0:
                folders.push_back(b.addNode(parent, container(name)));
                break;
            case 1:
                if (random() % 3 == 0)
                    b.addNode(parent, container(name, NodeKind::package));
                else
                    b.addNode(parent, file(name, 0));
                break;
            default:
                b.addNode(parent, file(name, static_cast<std::int64_t>(random() % 2 == 0 ? random() % 100 : random() % 1'000'000)));
            }
        }
        auto tree = finish(b);
        SunburstLayout layout = layOut(*tree, 6, 0.002, VolumeCapacity { tree->allocatedSize(NodeID::root()) * 2, 1000 });

        for (std::size_t r = 0; r < layout.rings.size(); ++r) {
            const SunburstLayout::Ring& ring = layout.rings[r];
            ASSERT_FALSE(ring.empty());
            for (std::size_t i = 0; i < ring.size(); ++i) {
                const SunburstSector& sector = ring[i];
                ASSERT_EQ(sector.ring, static_cast<int>(r));
                ASSERT_LT(sector.start, sector.end);
                ASSERT_GE(sector.start, 0.0);
                ASSERT_LE(sector.end, 1.0);
                ASSERT_GE(sector.span(), 0.002 - 1e-12);
                if (i > 0) {
                    ASSERT_LE(ring[i - 1].end, sector.start + 1e-12) << "sectors overlap in ring " << r;
                }
                NodeID parent = layout.root;
                if (auto node = sector.node()) {
                    ASSERT_EQ(sector.bytes, tree->allocatedSize(*node));
                    parent = *tree->parent(*node);
                } else if (auto* rest = std::get_if<SunburstSector::SmallObjects>(&sector.content)) {
                    std::int64_t sum = 0;
                    ScanTree::Children children = tree->children(rest->parent);
                    for (std::int32_t k = rest->lower; k < rest->upper; ++k)
                        sum += tree->allocatedSize(children[static_cast<std::size_t>(k)]);
                    ASSERT_EQ(rest->upper, static_cast<std::int32_t>(children.size()));
                    ASSERT_GE(rest->count(), 2);
                    ASSERT_EQ(sector.bytes, sum);
                    parent = rest->parent;
                } else {
                    ASSERT_EQ(r, 0u);
                    continue;
                }
                if (r == 0) {
                    ASSERT_EQ(parent, layout.root);
                    if (sector.node()) {
                        ASSERT_EQ(tree->children(layout.root)[static_cast<std::size_t>(sector.branch)], *sector.node());
                    }
                    continue;
                }
                // The parent is a plain folder drawn one ring further in, around this sector.
                ASSERT_EQ(tree->kind(parent), NodeKind::directory);
                auto outer = std::find_if(layout.rings[r - 1].begin(), layout.rings[r - 1].end(),
                    [&](const SunburstSector& s) { return s.node() == parent; });
                ASSERT_NE(outer, layout.rings[r - 1].end());
                ASSERT_GE(sector.start, outer->start - 1e-12);
                ASSERT_LE(sector.end, outer->end + 1e-12);
                if (sector.node()) {
                    ASSERT_EQ(sector.branch, outer->branch);
                }
            }
        }
    }
}

TEST(SunburstLayout, SectorLookup)
{
    TreeBuilder b("disk", NodeKind::directory, std::nullopt);
    NodeID big = b.addNode(NodeID::root(), container("big"));
    b.addNode(big, file("inside", 150 * GB));
    NodeID small = b.addNode(NodeID::root(), file("small", 100 * GB));
    b.addSizesWithoutNodes(big, 150 * GB, 150 * GB, false);
    auto tree = finish(b);
    // Ring 0: big [0, 0.3), small [0.3, 0.4), unaccounted [0.4, 0.5), available [0.5, 1).
    // Ring 1: inside [0, 0.15) and a gap where big's own files and small have nothing.
    SunburstLayout layout = layOut(*tree, 8, 0, VolumeCapacity { 1000 * GB, 500 * GB });

    struct Case {
        int ring;
        double fraction;
        std::optional<std::size_t> sector; // index into the ring
    };
    const Case cases[] {
        { 0, 0.0, 0 },
        { 0, 0.2999, 0 },
        { 0, 0.3, 1 },
        { 0, 0.45, 2 },
        { 0, 0.9999999999999999, 3 },
        { 0, 1.0, std::nullopt },
        { 0, -0.1, std::nullopt },
        { 0, std::nan(""), std::nullopt },
        { 1, 0.1, 0 },
        { 1, 0.2, std::nullopt },
        { 1, 0.35, std::nullopt },
        { 2, 0.1, std::nullopt },
        { -1, 0.1, std::nullopt },
    };
    ASSERT_EQ(layout.rings.size(), 2u);
    for (const Case& c : cases) {
        std::optional<SunburstSector> found = layout.sector(c.ring, c.fraction);
        if (!c.sector) {
            EXPECT_FALSE(found) << c.ring << " " << c.fraction;
            continue;
        }
        ASSERT_TRUE(found) << c.ring << " " << c.fraction;
        EXPECT_EQ(*found, layout.rings[static_cast<std::size_t>(c.ring)][*c.sector]) << c.ring << " " << c.fraction;
    }
    EXPECT_EQ(layout.sector(0, 0.35)->node(), small);
}
