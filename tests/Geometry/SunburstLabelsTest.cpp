#include "Geometry/SunburstLabels.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

using namespace tarnwick;

namespace {

constexpr double viewWidth = 900;
constexpr double viewHeight = 700;
constexpr double charWidth = 7;

// A view of 900 x 700 with a 60 px centre and two 40 px rings: the drawn rings end at 140 px.
SunburstGeometry geometry()
{
    SunburstGeometry result;
    result.center = { viewWidth / 2, viewHeight / 2 };
    result.centerRadius = 60;
    result.ringWidth = 40;
    result.ringCount = 2;
    return result;
}

constexpr double outerRadius = 140;

// Ring 0 cut into sectors of the given spans, in order from twelve o'clock; node i+1 for
// sector i; a second ring holds one child of the first sector so that both rings are drawn.
SunburstLayout layoutOf(const std::vector<double>& spans)
{
    SunburstLayout layout;
    layout.rings.resize(2);
    double start = 0;
    for (std::size_t i = 0; i < spans.size(); ++i) {
        SunburstSector sector;
        sector.content = NodeID { static_cast<std::int32_t>(i + 1) };
        sector.start = start;
        sector.end = start + spans[i];
        layout.rings[0].push_back(sector);
        start = sector.end;
    }
    SunburstSector child;
    child.content = NodeID { 1000 };
    child.ring = 1;
    child.end = spans.empty() ? 0.001 : spans[0] / 2;
    layout.rings[1].push_back(child);
    return layout;
}

// Names of the given lengths in characters, by node; the child's is one letter.
SunburstLabels::Metrics metricsOf(std::vector<int> lengths)
{
    SunburstLabels::Metrics metrics;
    metrics.lineHeight = 14;
    metrics.shortestWidth = 8 * charWidth;
    metrics.width = [lengths](NodeID node) {
        auto index = static_cast<std::size_t>(node.value - 1);
        return charWidth * (index < lengths.size() ? lengths[index] : 1);
    };
    return metrics;
}

double distance(SunburstGeometry::Point point)
{
    return std::hypot(point.x - viewWidth / 2, point.y - viewHeight / 2);
}

// The least distance from the centre to a segment.
double distanceToSegment(SunburstGeometry::Point a, SunburstGeometry::Point b)
{
    double dx = b.x - a.x;
    double dy = b.y - a.y;
    double length = dx * dx + dy * dy;
    double t = length > 0 ? std::clamp(((viewWidth / 2 - a.x) * dx + (viewHeight / 2 - a.y) * dy) / length, 0.0, 1.0) : 0.0;
    return distance({ a.x + t * dx, a.y + t * dy });
}

double distanceToRect(const SunburstLabels::Rect& rect)
{
    double x = std::clamp(viewWidth / 2, rect.x, rect.right());
    double y = std::clamp(viewHeight / 2, rect.y, rect.bottom());
    return distance({ x, y });
}

// The four corners of an inside name's box.
std::vector<SunburstGeometry::Point> corners(const SunburstLabels::Inside& label, double height)
{
    double turn = label.degrees * std::numbers::pi / 180;
    std::vector<SunburstGeometry::Point> points;
    for (double sx : { -0.5, 0.5 }) {
        for (double sy : { -0.5, 0.5 }) {
            double x = sx * label.width;
            double y = sy * height;
            points.push_back({ label.center.x + x * std::cos(turn) - y * std::sin(turn), label.center.y + x * std::sin(turn) + y * std::cos(turn) });
        }
    }
    return points;
}

double fractionOf(SunburstGeometry::Point point)
{
    double angle = std::atan2(point.x - viewWidth / 2, viewHeight / 2 - point.y);
    return (angle < 0 ? angle + 2 * std::numbers::pi : angle) / (2 * std::numbers::pi);
}

void expectOutsideLabelsClear(const SunburstLabels& labels)
{
    for (std::size_t i = 0; i < labels.outside.size(); ++i) {
        const SunburstLabels::Outside& label = labels.outside[i];
        EXPECT_GE(label.box.x, 0);
        EXPECT_GE(label.box.y, 0);
        EXPECT_LE(label.box.right(), viewWidth);
        EXPECT_LE(label.box.bottom(), viewHeight);
        EXPECT_GE(distanceToRect(label.box), outerRadius) << "a name beside the map lies over the rings";
        for (std::size_t j = i + 1; j < labels.outside.size(); ++j)
            EXPECT_FALSE(label.box.intersects(labels.outside[j].box)) << "names " << i << " and " << j << " overlap";
        ASSERT_GE(label.leader.size(), 3u);
        EXPECT_LT(distance(label.leader.front()), outerRadius);
        for (std::size_t p = 1; p + 1 < label.leader.size(); ++p)
            EXPECT_GE(distanceToSegment(label.leader[p], label.leader[p + 1]), outerRadius) << "a leader line cuts across the rings";
    }
}

}

TEST(SunburstLabels, ShortNamesGoInsideTheirSectorsAndReadUpright)
{
    // Eight equal sectors, all around the clock, with 5-letter names.
    SunburstLayout layout = layoutOf(std::vector<double>(8, 0.125));
    SunburstLabels labels = SunburstLabels::place(layout, geometry(), viewWidth, viewHeight, metricsOf(std::vector<int>(8, 5)));
    ASSERT_EQ(labels.outside.size(), 0u);
    ASSERT_EQ(labels.inside.size(), 9u); // the child's one letter fits too
    for (const SunburstLabels::Inside& label : labels.inside) {
        double upright = std::fmod(label.degrees + 360.0, 360.0);
        EXPECT_TRUE(upright <= 90.0 || upright >= 270.0) << "node " << label.node.value << " turned " << label.degrees;
        if (label.node.value == 1000)
            continue;
        const SunburstSector& sector = layout.rings[0][static_cast<std::size_t>(label.node.value - 1)];
        for (SunburstGeometry::Point corner : corners(label, 14)) {
            EXPECT_GE(distance(corner), 60);
            EXPECT_LE(distance(corner), 100);
            double fraction = fractionOf(corner);
            if (sector.start == 0 && fraction > 0.5)
                fraction -= 1;
            EXPECT_GE(fraction, sector.start) << "node " << label.node.value;
            EXPECT_LE(fraction, sector.end) << "node " << label.node.value;
        }
    }
}

TEST(SunburstLabels, NamesTooLongForTheirSectorGoBesideTheMapClearOfTheRings)
{
    // Sectors at every quarter, names of 40 letters: none fits inside a 40 px ring.
    SunburstLayout layout = layoutOf({ 0.1, 0.15, 0.2, 0.05, 0.3, 0.2 });
    SunburstLabels labels = SunburstLabels::place(layout, geometry(), viewWidth, viewHeight, metricsOf(std::vector<int>(6, 40)));
    EXPECT_EQ(labels.outside.size(), 6u);
    expectOutsideLabelsClear(labels);
    for (const SunburstLabels::Outside& label : labels.outside) {
        const SunburstSector& sector = layout.rings[0][static_cast<std::size_t>(label.node.value - 1)];
        bool rightHalf = (sector.start + sector.end) / 2 < 0.5;
        EXPECT_EQ(label.side, rightHalf ? SunburstLabels::Side::right : SunburstLabels::Side::left);
        EXPECT_EQ(label.box.width, 40 * charWidth) << "a name with room beside the map is given all of its width";
    }
}

TEST(SunburstLabels, CrowdedSectorsGiveTheLargestAtMostADozenNamesThatDontOverlap)
{
    // 30 sectors on the right half, the first twelve larger; one sector far too thin to name.
    std::vector<double> spans;
    for (int i = 0; i < 30; ++i)
        spans.push_back(i < 12 ? 0.02 : 0.0125);
    spans.push_back(0.005);
    SunburstLayout layout = layoutOf(spans);
    SunburstLabels labels = SunburstLabels::place(layout, geometry(), viewWidth, viewHeight, metricsOf(std::vector<int>(31, 30)));
    ASSERT_EQ(labels.outside.size(), static_cast<std::size_t>(SunburstLabels::mostOutside));
    for (const SunburstLabels::Outside& label : labels.outside)
        EXPECT_LE(label.node.value, 12) << "a smaller sector was named before a larger one";
    expectOutsideLabelsClear(labels);
}

TEST(SunburstLabels, TooLittleRoomBesideTheMapShortensOrLeavesOutNames)
{
    // The same map in a view only 40 px wider than the rings: a long name is given what is left,
    // which is less than its width; in a view with no room at the sides there are no names there.
    SunburstLayout layout = layoutOf({ 0.25, 0.25, 0.25, 0.25 });
    SunburstGeometry tight = geometry();
    tight.center.x = 190;
    SunburstLabels labels = SunburstLabels::place(layout, tight, 380, viewHeight, metricsOf({ 60, 60, 60, 60 }));
    for (const SunburstLabels::Outside& label : labels.outside) {
        EXPECT_LE(label.box.right(), 380);
        EXPECT_GE(label.box.x, 0);
        EXPECT_LT(label.box.width, 60 * charWidth);
    }
    tight.center.x = 145;
    EXPECT_TRUE(SunburstLabels::place(layout, tight, 290, viewHeight, metricsOf({ 60, 60, 60, 60 })).outside.empty());
}
