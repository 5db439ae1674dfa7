#include "Geometry/SunburstGeometry.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace tarnwick;

TEST(SunburstGeometry, RingsFitTheView)
{
    struct Case {
        const char* what;
        int maxRings;
        double width, height, minimumRingWidth, inset;
        double centerRadius;
        int ringCount;
        double ringWidth;
    };
    const double nan = std::nan("");
    const double infinity = std::numeric_limits<double>::infinity();
    const Case cases[] {
        { "large view, limited by maxRings", 8, 800, 600, 20, 10, 69.6, 8, (290 - 69.6) / 8 },
        { "limited by the ring width", 20, 800, 600, 20, 10, 69.6, 11, (290 - 69.6) / 11 },
        { "small view keeps the smallest centre", 8, 300, 300, 20, 0, 56, 4, (150 - 56) / 4.0 },
        { "view smaller than the centre", 8, 100, 100, 20, 0, 50, 0, 0 },
        { "no minimum ring width", 8, 800, 600, 0, 10, 69.6, 0, 0 },
        { "negative maxRings", -2, 800, 600, 20, 10, 69.6, 0, 0 },
        { "inset larger than the view", 8, 800, 600, 20, 500, 0, 0, 0 },
        { "width not a number", 8, nan, 600, 20, 0, 0, 0, 0 },
        { "infinite ring width", 8, 800, 600, infinity, 0, 72, 0, 0 },
    };
    for (const Case& c : cases) {
        SunburstGeometry g = SunburstGeometry::geometry(c.maxRings, c.width, c.height, c.minimumRingWidth, c.inset);
        EXPECT_NEAR(g.centerRadius, c.centerRadius, 1e-9) << c.what;
        EXPECT_EQ(g.ringCount, c.ringCount) << c.what;
        EXPECT_NEAR(g.ringWidth, c.ringWidth, 1e-9) << c.what;
    }
    SunburstGeometry g = SunburstGeometry::geometry(8, 800, 600, 20, 10);
    EXPECT_EQ(g.center, (SunburstGeometry::Point { 400, 300 }));
}

TEST(SunburstGeometry, HitTesting)
{
    // Centre (400, 300), centre radius 69.6, 8 rings of 27.55.
    SunburstGeometry g = SunburstGeometry::geometry(8, 800, 600, 20, 10);
    using Hit = SunburstGeometry::Hit;
    const double r = g.centerRadius;
    const double w = g.ringWidth;

    EXPECT_EQ(g.hit({ 400, 300 }), Hit::center());
    EXPECT_EQ(g.hit({ 400, 300 - r }), Hit::center()); // exactly on the centre circle
    EXPECT_EQ(g.hit({ 400, 300 - r - 0.001 }), Hit::ring(0, 0.0)); // twelve o'clock just outside

    Hit justLeft = g.hit({ 400 - 1e-9, 300 - r - 1 });
    ASSERT_EQ(justLeft.kind, Hit::Kind::ring);
    EXPECT_LT(justLeft.fraction, 1.0);
    EXPECT_GT(justLeft.fraction, 0.999999);
    // So close to twelve o'clock that the angle rounds to a full turn: still below 1.
    SunburstGeometry atOrigin { { 0, 0 }, 10, 10, 2 };
    EXPECT_EQ(atOrigin.hit({ -1e-300, -11 }), Hit::ring(0, 0.9999999999999999));

    struct Case {
        SunburstGeometry::Point point;
        Hit hit;
    };
    const Case cases[] {
        { { 400 + r + 1, 300 }, Hit::ring(0, 0.25) },         // three o'clock
        { { 400, 300 + r + w + 1 }, Hit::ring(1, 0.5) },      // six o'clock, second ring
        { { 400 - r - 7 * w - 1, 300 }, Hit::ring(7, 0.75) }, // nine o'clock, last ring
        { { 400 - r - 8 * w - 1, 300 }, Hit::outside() },
        { { 0, 0 }, Hit::outside() },
        { { std::nan(""), 300 }, Hit::outside() },
        { { std::numeric_limits<double>::infinity(), 300 }, Hit::outside() },
    };
    for (const Case& c : cases) {
        Hit hit = g.hit(c.point);
        EXPECT_EQ(hit.kind, c.hit.kind) << c.point.x << "," << c.point.y;
        EXPECT_EQ(hit.index, c.hit.index) << c.point.x << "," << c.point.y;
        EXPECT_NEAR(hit.fraction, c.hit.fraction, 1e-12) << c.point.x << "," << c.point.y;
    }

    // Without rings, everything beyond the centre is outside.
    SunburstGeometry bare = SunburstGeometry::geometry(8, 800, 600, 0, 10);
    EXPECT_EQ(bare.hit({ 400, 300 - r - 1 }), Hit::outside());
    EXPECT_EQ(bare.hit({ 400, 300 }), Hit::center());
}
