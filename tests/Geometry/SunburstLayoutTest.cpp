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
constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();

TreeBuilder::Entry file(std::string_view name, std::int64_t size)
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

// A root holding files of the given sizes and, counted without nodes, the rest of `total`.
std::shared_ptr<const ScanTree> rootWith(const std::vector<std::int64_t>& sizes, std::int64_t total = 100'000)
{
    TreeBuilder b("r", NodeKind::directory, std::nullopt);
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        b.addNode(NodeID::root(), file("f" + std::to_string(100 + i), sizes[i]));
        total -= sizes[i];
    }
    b.addSizesWithoutNodes(NodeID::root(), total, total, false);
    return finish(b);
}

SunburstLayout layOut(const ScanTree& tree, int rings, double minimumSpan = 0, std::optional<VolumeCapacity> capacity = std::nullopt,
    NodeID root = NodeID::root())
{
    return SunburstLayout::layout(tree, root, rings, 1500, capacity, [minimumSpan](int) { return minimumSpan; });
}

// "#node start-end bN" per node sector, "rest(parent:lower-upper)", "unaccounted" and
// "available" for the others; sectors joined by ", ", rings by " / ".
std::string describe(const SunburstLayout& layout)
{
    std::string text;
    char number[64];
    for (const SunburstLayout::Ring& ring : layout.rings) {
        if (!text.empty())
            text += " / ";
        for (std::size_t i = 0; i < ring.size(); ++i) {
            const SunburstSector& s = ring[i];
            text += i > 0 ? ", " : "";
            if (auto node = s.node())
                text += "#" + std::to_string(node->value);
            else if (auto* rest = std::get_if<SunburstSector::SmallObjects>(&s.content))
                text += "rest(" + std::to_string(rest->parent.value) + ":" + std::to_string(rest->lower) + "-" + std::to_string(rest->upper) + ")";
            else
                text += std::holds_alternative<SunburstSector::Unaccounted>(s.content) ? "unaccounted"
                    : std::holds_alternative<SunburstSector::Reserved>(s.content)      ? "reserved"
                                                                                       : "available";
            std::snprintf(number, sizeof number, " %.6g-%.6g", s.start, s.end);
            text += number;
            if (s.branch != SunburstSector::noBranch)
                text += " b" + std::to_string(s.branch);
        }
    }
    return text;
}

}

TEST(SunburstLayout, EmptyLayouts)
{
    auto noBytes = rootWith({ 0 }, 0);
    EXPECT_EQ(describe(layOut(*noBytes, 8)), "");
    EXPECT_EQ(describe(layOut(*noBytes, 8, 0, VolumeCapacity { 1000, 500 })), "");
    auto tree = rootWith({ 60'000 });
    EXPECT_EQ(describe(layOut(*tree, 0)), "");
    EXPECT_EQ(describe(layOut(*tree, -3)), "");
    EXPECT_EQ(layOut(*tree, 0).rootBytes, 100'000);
    // A root without children shows no volume sectors either: there is nothing to set them beside.
    TreeBuilder lone("r", NodeKind::file, std::nullopt);
    EXPECT_EQ(describe(layOut(*finish(lone), 8, 0, VolumeCapacity { 1000, 500 })), "");
}

TEST(SunburstLayout, VolumeCapacity)
{
    auto tree = rootWith({ 300 * GB, 100 * GB }, 400 * GB);
    struct Case {
        const char* what;
        std::optional<VolumeCapacity> capacity;
        std::string rings;
    };
    const Case cases[] {
        { "1000 GB volume, 500 GB free", VolumeCapacity { 1000 * GB, 500 * GB }, "#1 0-0.3 b0, #2 0.3-0.4 b1, unaccounted 0.4-0.5, available 0.5-1" },
        { "an ext4 reserve is its own piece, not used space", VolumeCapacity { 1000 * GB, 450 * GB, 50 * GB },
            "#1 0-0.3 b0, #2 0.3-0.4 b1, unaccounted 0.4-0.5, reserved 0.5-0.55, available 0.55-1" },
        { "a scan that finds everything leaves nothing unaccounted", VolumeCapacity { 1000 * GB, 550 * GB, 50 * GB },
            "#1 0-0.3 b0, #2 0.3-0.4 b1, reserved 0.4-0.45, available 0.45-1" },
        { "no capacity", std::nullopt, "#1 0-0.75 b0, #2 0.75-1 b1" },
        { "negative free space counts as none", VolumeCapacity { 1000 * GB, -5 }, "#1 0-0.3 b0, #2 0.3-0.4 b1, unaccounted 0.4-1" },
        { "a total below used plus free is raised", VolumeCapacity { 0, 600 * GB }, "#1 0-0.3 b0, #2 0.3-0.4 b1, available 0.4-1" },
        { "a full volume", VolumeCapacity { 400 * GB, 0 }, "#1 0-0.75 b0, #2 0.75-1 b1" },
        { "free space that would overflow is capped", VolumeCapacity { 0, largest }, "available 1.73472e-07-1" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(describe(layOut(*tree, 8, 0, c.capacity)), c.rings) << c.what;

    SunburstLayout layout = layOut(*tree, 8, 0, VolumeCapacity { 1000 * GB, 500 * GB });
    EXPECT_EQ(layout.rings[0][2].bytes, 100 * GB);
    EXPECT_EQ(layout.rings[0][3].bytes, 500 * GB);
    EXPECT_EQ(layOut(*tree, 8, 0, VolumeCapacity { 0, largest }).rings[0][0].bytes, largest / 4);
    // The pieces of a whole disk add up to its capacity.
    SunburstLayout reserved = layOut(*tree, 8, 0, VolumeCapacity { 1000 * GB, 450 * GB, 50 * GB });
    std::int64_t sum = 0;
    for (const SunburstSector& sector : reserved.rings[0])
        sum += sector.bytes;
    EXPECT_EQ(sum, 1000 * GB);
}

TEST(SunburstLayout, MinimumSpansAndSmallObjects)
{
    std::vector<std::int64_t> tenSmall(1, 50'000);
    tenSmall.insert(tenSmall.end(), 10, 500);
    // 8 rings give a base minimum span of 8/1500 of a turn: 8,000 of 1,500,000 bytes.
    const std::vector<std::int64_t> aroundBase { 1'484'000, 8'001, 7'999 };
    struct Case {
        const char* what;
        std::vector<std::int64_t> sizes;
        std::int64_t total;
        int rings;
        double span;
        std::string layout;
    };
    const Case cases[] {
        { "two leftovers too narrow together", { 50'000, 100, 100 }, 100'000, 3, 0.01, "#1 0-0.5 b0" },
        { "ten leftovers that add up", tenSmall, 100'000, 3, 0.01, "#1 0-0.5 b0, rest(0:1-11) 0.5-0.55" },
        { "a single leftover is dropped", { 50'000, 900 }, 100'000, 3, 0.01, "#1 0-0.5 b0" },
        { "leftovers without bytes", { 50'000, 0, 0 }, 100'000, 3, 0.01, "#1 0-0.5 b0" },
        { "above the base span", aroundBase, 1'500'000, 8, 0, "#1 0-0.989333 b0, #2 0.989333-0.994667 b1" },
        { "the view's span when larger", aroundBase, 1'500'000, 8, 0.006, "#1 0-0.989333 b0, rest(0:1-3) 0.989333-1" },
        { "the base span when the view answers NaN", aroundBase, 1'500'000, 8, std::nan(""), "#1 0-0.989333 b0, #2 0.989333-0.994667 b1" },
        { "fewer rings, smaller base span", aroundBase, 1'500'000, 7, 0, "#1 0-0.989333 b0, #2 0.989333-0.994667 b1, #3 0.994667-1 b2" },
        { "at the divisor only everything together fits", aroundBase, 1'500'000, 1500, 0, "rest(0:0-3) 0-1" },
    };
    for (const Case& c : cases) {
        SunburstLayout layout = layOut(*rootWith(c.sizes, c.total), c.rings, c.span);
        EXPECT_EQ(describe(layout), c.layout) << c.what;
    }
    EXPECT_EQ(layOut(*rootWith(tenSmall), 3, 0.01).rings[0][1].bytes, 5'000);

    // The view may ask for a different span in each ring.
    TreeBuilder b("r", NodeKind::directory, std::nullopt);
    NodeID folder = b.addNode(NodeID::root(), container("d"));
    for (auto [name, size] : { std::pair { "x", 60 }, { "y", 20 }, { "z", 20 } })
        b.addNode(folder, file(name, size));
    auto tree = finish(b);
    SunburstLayout layout = SunburstLayout::layout(*tree, NodeID::root(), 3, 1500, std::nullopt, [](int ring) { return ring == 1 ? 0.3 : 0.0; });
    EXPECT_EQ(describe(layout), "#1 0-1 b0 / #2 0-0.6 b0, rest(1:1-3) 0.6-1");
}

TEST(SunburstLayout, RingsNestAndKeepTheirBranchButPackagesStayClosed)
{
    TreeBuilder b("r", NodeKind::directory, std::nullopt);
    NodeID a = b.addNode(NodeID::root(), container("a"));              // 1: 600
    NodeID bee = b.addNode(NodeID::root(), container("b"));            // 2: 400
    b.addNode(a, file("a1", 300));                                     // 3
    NodeID b1 = b.addNode(bee, container("b1"));                       // 4
    NodeID app = b.addNode(a, container("App.app", NodeKind::package)); // 5: 300
    b.addNode(b1, file("b11", 400));                                   // 6
    b.addNode(app, file("binary", 300));                               // 7, never drawn
    auto tree = finish(b);

    EXPECT_EQ(describe(layOut(*tree, 8)), "#1 0-0.6 b0, #2 0.6-1 b1 / #5 0-0.3 b0, #3 0.3-0.6 b0, #4 0.6-1 b1 / #6 0.6-1 b1");
    EXPECT_EQ(describe(layOut(*tree, 2)), "#1 0-0.6 b0, #2 0.6-1 b1 / #5 0-0.3 b0, #3 0.3-0.6 b0, #4 0.6-1 b1");
    // Laid out from a folder, the folder's children form ring 0 with branches of their own.
    SunburstLayout fromB = layOut(*tree, 8, 0, std::nullopt, bee);
    EXPECT_EQ(fromB.rootBytes, 400);
    EXPECT_EQ(describe(fromB), "#4 0-1 b0 / #6 0-1 b0");
}

TEST(SunburstLayout, SaturatedTotalsStayInsideTheTurn)
{
    constexpr std::int64_t half = largest / 2 + 1;
    // The root's total is clamped, so its children add up to more than it: the third finds no room.
    auto tree = rootWith({ half, half, half }, largest);
    EXPECT_EQ(describe(layOut(*tree, 8)), "#1 0-0.5 b0, #2 0.5-1 b1");
}

// Structural checks on random trees: what a drawing of any tree relies on.
TEST(SunburstLayout, RandomTreesKeepRingInvariants)
{
    for (unsigned seed = 1; seed <= 20; ++seed) {
        std::mt19937 random(seed);
        TreeBuilder b("r", NodeKind::directory, std::nullopt);
        std::vector<NodeID> folders { NodeID::root() };
        for (int i = 0; i < 600; ++i) {
            NodeID parent = folders[random() % folders.size()];
            std::string name = "n" + std::to_string(i);
            unsigned dice = random() % 12;
            if (dice < 2)
                folders.push_back(b.addNode(parent, container(name)));
            else if (dice == 2)
                b.addNode(parent, container(name, NodeKind::package));
            else
                b.addNode(parent, file(name, static_cast<std::int64_t>(dice < 5 ? random() % 100 : random() % 1'000'000)));
        }
        auto tree = finish(b);
        SunburstLayout layout = layOut(*tree, 6, 0.002, VolumeCapacity { tree->allocatedSize(NodeID::root()) * 2, 1000 });

        for (std::size_t r = 0; r < layout.rings.size(); ++r) {
            const SunburstLayout::Ring& ring = layout.rings[r];
            ASSERT_FALSE(ring.empty());
            for (std::size_t i = 0; i < ring.size(); ++i) {
                const SunburstSector& sector = ring[i];
                ASSERT_EQ(sector.ring, static_cast<int>(r));
                ASSERT_TRUE(0 <= sector.start && sector.start < sector.end && sector.end <= 1.0);
                ASSERT_GE(sector.span(), 0.002 - 1e-12);
                ASSERT_TRUE(i == 0 || ring[i - 1].end <= sector.start + 1e-12) << "overlap in ring " << r;
                std::optional<NodeID> parent;
                if (auto node = sector.node()) {
                    ASSERT_EQ(sector.bytes, tree->allocatedSize(*node));
                    parent = tree->parent(*node);
                } else if (auto* rest = std::get_if<SunburstSector::SmallObjects>(&sector.content)) {
                    ScanTree::Children children = tree->children(rest->parent);
                    std::int64_t sum = 0;
                    for (NodeID child : children.subspan(static_cast<std::size_t>(rest->lower)))
                        sum += tree->allocatedSize(child);
                    ASSERT_TRUE(rest->upper == static_cast<std::int32_t>(children.size()) && rest->count() >= 2);
                    ASSERT_EQ(sector.bytes, sum);
                    parent = rest->parent;
                }
                if (!parent || r == 0) {
                    ASSERT_TRUE(!parent || *parent == layout.root);
                    ASSERT_TRUE(!sector.node() || tree->children(layout.root)[static_cast<std::size_t>(sector.branch)] == *sector.node());
                    continue;
                }
                // The parent is a plain folder drawn one ring further in, around this sector.
                ASSERT_EQ(tree->kind(*parent), NodeKind::directory);
                const SunburstLayout::Ring& inner = layout.rings[r - 1];
                auto outer = std::find_if(inner.begin(), inner.end(), [&](const SunburstSector& s) { return s.node() == parent; });
                ASSERT_NE(outer, inner.end());
                ASSERT_TRUE(outer->start <= sector.start + 1e-12 && sector.end <= outer->end + 1e-12);
                ASSERT_TRUE(!sector.node() || sector.branch == outer->branch);
            }
        }
    }
}

TEST(SunburstLayout, SectorLookup)
{
    TreeBuilder b("disk", NodeKind::directory, std::nullopt);
    NodeID big = b.addNode(NodeID::root(), container("big"));
    b.addNode(big, file("inside", 150 * GB));
    b.addNode(NodeID::root(), file("small", 100 * GB));
    b.addSizesWithoutNodes(big, 150 * GB, 150 * GB, false);
    auto tree = finish(b);
    SunburstLayout layout = layOut(*tree, 8, 0, VolumeCapacity { 1000 * GB, 500 * GB });
    ASSERT_EQ(describe(layout), "#1 0-0.3 b0, #3 0.3-0.4 b1, unaccounted 0.4-0.5, available 0.5-1 / #2 0-0.15 b0");

    struct Case {
        int ring;
        double fraction;
        std::optional<std::size_t> sector; // index in the ring
    };
    const Case cases[] {
        { 0, 0.0, 0 }, { 0, 0.2999, 0 }, { 0, 0.3, 1 }, { 0, 0.45, 2 }, { 0, 0.9999999999999999, 3 },
        { 0, 1.0, std::nullopt }, { 0, -0.1, std::nullopt }, { 0, std::nan(""), std::nullopt },
        { 1, 0.1, 0 }, { 1, 0.15, std::nullopt }, { 1, 0.35, std::nullopt }, // a gap where nothing is drawn
        { 2, 0.1, std::nullopt }, { -1, 0.1, std::nullopt },
    };
    for (const Case& c : cases) {
        std::optional<SunburstSector> found = layout.sector(c.ring, c.fraction);
        std::optional<SunburstSector> expected;
        if (c.sector)
            expected = layout.rings[static_cast<std::size_t>(c.ring)][*c.sector];
        EXPECT_EQ(found, expected) << c.ring << " " << c.fraction;
    }
}
