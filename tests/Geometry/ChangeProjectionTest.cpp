#include "Geometry/ChangeProjection.hpp"

#include "Scanning/ScanTree.hpp"
#include "Scanning/TreeBuilder.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <map>

using namespace tarnwick;

namespace {

// "#node ring start-end change from segmentStart" per piece, joined by ", "; "none" when absent.
std::string describe(const std::optional<ChangeProjection>& projection)
{
    if (!projection)
        return "none";
    std::string text;
    char line[128];
    for (const ChangeProjection::Piece& piece : projection->pieces) {
        std::snprintf(line, sizeof line, "%s#%d r%d %.6g-%.6g %+lld from %.6g", text.empty() ? "" : ", ", piece.node.value, piece.ring, piece.start,
            piece.end, static_cast<long long>(piece.change), piece.segmentStart);
        text += line;
    }
    return text;
}

}

TEST(ChangeProjection, PiecesCoverTheClockwiseEndOfChangedSectors)
{
    TreeBuilder b("r", NodeKind::directory, std::nullopt);
    auto file = [&](NodeID parent, std::string_view name, std::int64_t size) {
        return b.addNode(parent, TreeBuilder::Entry { .name = name, .kind = NodeKind::file, .allocatedSize = size, .logicalSize = size });
    };
    NodeID a = b.addNode(NodeID::root(), TreeBuilder::Entry { .name = "a", .kind = NodeKind::directory });
    NodeID bee = file(NodeID::root(), "b", 400);
    NodeID a1 = file(a, "a1", 400);
    NodeID a2 = file(a, "a2", 200);
    NodeID tiny = file(NodeID::root(), "tiny", 0);
    auto tree = std::move(b).finalize("/r", ScanCoverage::whole(), TreeBuilder::Metadata::included);
    // Ring 0: a [0, 0.6), b [0.6, 1); ring 1: a1 [0, 0.4), a2 [0.4, 0.6); tiny is not drawn.
    SunburstLayout layout = SunburstLayout::layout(*tree, NodeID::root(), 4, 1500, std::nullopt, [](int) { return 0.0; });

    std::map<NodeID, std::int64_t> changes { { a, 300 }, { bee, -400 }, { a1, 1000 }, { a2, 0 } };
    auto project = [&](NodeID focus) {
        return ChangeProjection::project(
            layout, focus, [&](NodeID f, NodeID node) { return tree->isAncestor(f, node); },
            [&](NodeID node) -> std::optional<std::int64_t> {
                auto found = changes.find(node);
                return found == changes.end() ? std::nullopt : std::optional(found->second);
            });
    };
    // a grew by half its size now, b lost half of its former 800 bytes, a1 grew by more than its size.
    EXPECT_EQ(describe(project(NodeID::root())), "#1 r0 0.3-0.6 +300 from 0, #2 r0 0.8-1 -400 from 0.6, #3 r1 0-0.4 +1000 from 0");
    // Focused on a folder: the folder and what lies inside it, nothing beside it.
    EXPECT_EQ(describe(project(a)), "#1 r0 0.3-0.6 +300 from 0, #3 r1 0-0.4 +1000 from 0");
    // A drawn place without a change has an empty projection; a place that isn't drawn has none.
    EXPECT_EQ(describe(project(a2)), "");
    EXPECT_EQ(describe(project(tiny)), "none");
    // Unknown changes are skipped.
    changes.erase(a);
    EXPECT_EQ(describe(project(NodeID::root())), "#2 r0 0.8-1 -400 from 0.6, #3 r1 0-0.4 +1000 from 0");
}

TEST(ChangeProjection, ChangedFraction)
{
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    struct Case {
        std::int64_t bytes;
        std::int64_t change;
        double fraction;
    };
    const Case cases[] {
        { 100, 50, 0.5 }, { 100, 100, 1.0 }, { 100, 250, 1.0 }, { 100, -100, 0.5 }, { 300, -100, 0.25 },
        { 100, std::numeric_limits<std::int64_t>::min(), 1.0 }, { 1, largest, 1.0 }, { largest, -largest, 0.5 },
    };
    for (const Case& c : cases)
        EXPECT_NEAR(ChangeProjection::changedFraction(c.bytes, c.change), c.fraction, 1e-12) << c.bytes << " " << c.change;
}
