#include "Geometry/ChangeProjection.hpp"

#include "Scanning/ScanTree.hpp"
#include "Scanning/TreeBuilder.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <map>

using namespace tarnwick;

namespace {

TreeBuilder::Entry file(std::string_view name, std::int64_t size)
{
    return TreeBuilder::Entry { .name = name, .kind = NodeKind::file, .allocatedSize = size, .logicalSize = size };
}

struct Fixture {
    std::shared_ptr<const ScanTree> tree;
    NodeID a, b, a1, a2, tiny;
    SunburstLayout layout;
    std::map<NodeID, std::int64_t> changes;

    Fixture()
    {
        TreeBuilder builder("r", NodeKind::directory, std::nullopt);
        a = builder.addNode(NodeID::root(), TreeBuilder::Entry { .name = "a", .kind = NodeKind::directory });
        b = builder.addNode(NodeID::root(), file("b", 400));
        a1 = builder.addNode(a, file("a1", 400));
        a2 = builder.addNode(a, file("a2", 200));
        tiny = builder.addNode(NodeID::root(), file("tiny", 0));
        tree = std::move(builder).finalize("/r", ScanCoverage::whole(), TreeBuilder::Metadata::included);
        // Ring 0: a [0, 0.6), b [0.6, 1); ring 1: a1 [0, 0.4), a2 [0.4, 0.6).
        layout = SunburstLayout::layout(*tree, NodeID::root(), 4, 1500, std::nullopt, [](int) { return 0.0; });
        changes = { { a, 300 }, { b, -400 }, { a1, 1000 }, { a2, 0 } };
    }

    std::optional<ChangeProjection> project(NodeID focus) const
    {
        return ChangeProjection::project(
            layout, focus, [this](NodeID f, NodeID node) { return tree->isAncestor(f, node); },
            [this](NodeID node) -> std::optional<std::int64_t> {
                auto found = changes.find(node);
                if (found == changes.end())
                    return std::nullopt;
                return found->second;
            });
    }
};

void expectPiece(const ChangeProjection::Piece& piece, NodeID node, int ring, double start, double end, std::int64_t change, double segmentStart)
{
    EXPECT_EQ(piece.node, node);
    EXPECT_EQ(piece.ring, ring);
    EXPECT_NEAR(piece.start, start, 1e-12);
    EXPECT_NEAR(piece.end, end, 1e-12);
    EXPECT_EQ(piece.change, change);
    EXPECT_NEAR(piece.segmentStart, segmentStart, 1e-12);
}

}

TEST(ChangeProjection, PiecesCoverTheClockwiseEndOfChangedSectors)
{
    Fixture f;
    std::optional<ChangeProjection> all = f.project(NodeID::root());
    ASSERT_TRUE(all);
    ASSERT_EQ(all->pieces.size(), 3u);
    expectPiece(all->pieces[0], f.a, 0, 0.3, 0.6, 300, 0.0);  // grew by half its size now
    expectPiece(all->pieces[1], f.b, 0, 0.8, 1.0, -400, 0.6); // lost half its former 800 bytes
    expectPiece(all->pieces[2], f.a1, 1, 0.0, 0.4, 1000, 0.0); // grew by more than its size: all of it

    // Focused on a folder: the folder and what lies inside it, nothing beside it.
    std::optional<ChangeProjection> inA = f.project(f.a);
    ASSERT_TRUE(inA);
    ASSERT_EQ(inA->pieces.size(), 2u);
    EXPECT_EQ(inA->pieces[0].node, f.a);
    EXPECT_EQ(inA->pieces[1].node, f.a1);

    // A drawn place without a change has an empty projection; a place that isn't drawn has none.
    std::optional<ChangeProjection> unchanged = f.project(f.a2);
    ASSERT_TRUE(unchanged);
    EXPECT_TRUE(unchanged->pieces.empty());
    EXPECT_FALSE(f.project(f.tiny));

    // Unknown changes are skipped.
    f.changes.erase(f.a);
    EXPECT_EQ(f.project(NodeID::root())->pieces.size(), 2u);
}

TEST(ChangeProjection, ChangedFraction)
{
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
    struct Case {
        std::int64_t bytes;
        std::int64_t change;
        double fraction;
    };
    const Case cases[] {
        { 100, 50, 0.5 },
        { 100, 100, 1.0 },
        { 100, 250, 1.0 },
        { 100, -100, 0.5 },
        { 300, -100, 0.25 },
        { 100, smallest, 1.0 },
        { 1, largest, 1.0 },
        { largest, -largest, 0.5 },
    };
    for (const Case& c : cases)
        EXPECT_NEAR(ChangeProjection::changedFraction(c.bytes, c.change), c.fraction, 1e-12) << c.bytes << " " << c.change;
}
