#include "History/HistoryTestSupport.hpp"
#include "History/HistoryTexts.hpp"
#include "History/VolumeTimeline.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;
using fixtures::utc;

namespace {

constexpr std::int64_t GB = 1'000'000'000;
constexpr std::int64_t capacity = 1000 * GB;

const Calendar utcCalendar = Calendar::fixed(0);

// One point a day at noon from the first day, with the given available space in bytes.
std::vector<VolumeTimeline::Point> daily(Date first, const std::vector<std::int64_t>& available)
{
    std::vector<VolumeTimeline::Point> points;
    for (std::size_t k = 0; k < available.size(); ++k)
        points.push_back({ first + std::chrono::hours(24 * static_cast<int>(k)), capacity, available[k] });
    return points;
}

}

TEST(VolumeTimeline, OneDayHasNoSpanNoPaceNoForecast)
{
    const Date now = utc(2025, 3, 10, 20);
    std::vector<VolumeMeasurement> measurements {
        { utc(2025, 3, 10, 8), capacity, 300 * GB, std::nullopt },
        { utc(2025, 3, 10, 19), capacity, 100 * GB, 5 * GB },
        { utc(2025, 3, 10, 9), capacity, 200 * GB, std::nullopt },
    };
    auto timeline = VolumeTimeline::make(measurements, now, utcCalendar);
    ASSERT_EQ(timeline.points.size(), 1u);
    EXPECT_EQ(timeline.points[0].available, 100 * GB);
    EXPECT_EQ(timeline.latest, timeline.points[0]);
    EXPECT_EQ(timeline.dayCount, 1);
    EXPECT_EQ(timeline.spanDays(), 0);
    EXPECT_EQ(timeline.pacePerDay, 0);
    EXPECT_TRUE(timeline.jumps.empty());
    EXPECT_FALSE(timeline.forecast);
    EXPECT_TRUE(timeline.isSteady);
    EXPECT_EQ(timeline.capacity, capacity);
}

TEST(VolumeTimeline, PointsAreTheLatestOfEachOfThePast30Days)
{
    const Calendar berlinLike = Calendar::fixed(3600);
    const Date now = utc(2025, 3, 31, 10);
    std::vector<VolumeMeasurement> measurements {
        { utc(2025, 3, 1, 22, 59), capacity, 1, std::nullopt },   // 1 March local: 31 days ago, left out
        { utc(2025, 3, 1, 23, 0), capacity, 2, std::nullopt },    // 2 March local: the first of the 30 days
        { utc(2025, 3, 2, 12), capacity, 3, std::nullopt },       // the later one of 2 March
        { utc(2025, 3, 30, 23, 30), capacity, 4, std::nullopt },  // 31 March local, today
        { utc(2025, 3, 30, 22, 30), capacity, 5, std::nullopt },  // 30 March local
    };
    auto timeline = VolumeTimeline::make(measurements, now, berlinLike);
    std::vector<std::int64_t> available;
    for (const auto& point : timeline.points)
        available.push_back(point.available);
    EXPECT_EQ(available, (std::vector<std::int64_t> { 3, 5, 4 }));
    EXPECT_EQ(timeline.dayCount, 3);
    EXPECT_EQ(timeline.latest->available, 4);

    // Only old measurements: no points, but the newest is still known.
    auto old = VolumeTimeline::make(std::span(measurements).first(1), now, berlinLike);
    EXPECT_TRUE(old.points.empty());
    ASSERT_TRUE(old.latest);
    EXPECT_EQ(old.latest->available, 1);
    EXPECT_EQ(old.automaticScale, VolumeTimeline::Scale::zoomed);
    EXPECT_FALSE(VolumeTimeline::make(std::vector<VolumeMeasurement> {}, now, berlinLike).latest);
}

TEST(VolumeTimeline, AOneOffJumpIsLeftOutOfThePace)
{
    // Half a gigabyte a day, and a 20 GB download on the fifth day.
    const std::vector<std::int64_t> available { 400 * GB, 399'500'000'000, 399 * GB, 398'500'000'000,
        378'500'000'000, 378 * GB, 377'500'000'000, 377 * GB };
    auto timeline = VolumeTimeline::make(daily(utc(2025, 3, 3, 12), available));
    EXPECT_EQ(VolumeTimeline::jumpThreshold(timeline.points), 5 * GB);
    ASSERT_EQ(timeline.jumps.size(), 1u);
    EXPECT_EQ(timeline.jumps[0], (VolumeTimeline::Jump { 4, utc(2025, 3, 7, 12), -20 * GB }));
    // 23 GB less over 7 days, of which 20 GB in the jump.
    EXPECT_DOUBLE_EQ(timeline.pacePerDay, -3e9 / 7);
    EXPECT_EQ(timeline.lowestUsed, 600 * GB);
    EXPECT_EQ(timeline.highestUsed, 623 * GB);
    EXPECT_FALSE(timeline.isSteady);
    ASSERT_TRUE(timeline.forecast);
    EXPECT_EQ(timeline.forecast->from, utc(2025, 3, 3, 12));
    EXPECT_EQ(timeline.forecast->to, utc(2025, 3, 10, 12));
    EXPECT_EQ(timeline.forecast->available, 377 * GB);
    EXPECT_DOUBLE_EQ(timeline.forecast->daysLeft(), 377.0 * 7 / 3);
    EXPECT_EQ(timeline.forecast->text(utcCalendar), HistoryTexts::forecastBeyondYear);
}

TEST(VolumeTimeline, JumpThresholdIsFourTimesTheMiddleChangeWithAFloor)
{
    struct Case {
        std::vector<std::int64_t> available;
        std::int64_t threshold;
    };
    const Case cases[] = {
        { { 100 * GB }, 5 * GB },
        { { 100 * GB, 101'249'999'999, 100 * GB, 98'750'000'001 }, 5 * GB }, // every change under 1.25 GB
        { { 100 * GB, 98'749'999'999, 97'499'999'998 }, 5'000'000'004 },     // 1,250,000,001 x 4
        // Changes 2, 10, 3 and 4 GB: the middle element of the sorted four is the third, 4 GB.
        { { 100 * GB, 102 * GB, 92 * GB, 95 * GB, 91 * GB }, 16 * GB },
        { { 0, 3, 3, 3 }, 5 * GB },
    };
    for (const Case& c : cases)
        EXPECT_EQ(VolumeTimeline::jumpThreshold(daily(utc(2025, 1, 1), c.available)), c.threshold);

    // A change of exactly the threshold is a jump.
    auto timeline = VolumeTimeline::make(daily(utc(2025, 1, 1), { 100 * GB, 100 * GB, 95 * GB, 95 * GB }));
    ASSERT_EQ(timeline.jumps.size(), 1u);
    EXPECT_EQ(timeline.jumps[0].change, -5 * GB);
    EXPECT_EQ(timeline.pacePerDay, 0);
}

TEST(VolumeTimeline, ForecastsOnlyAMarkedSteadyLoss)
{
    struct Case {
        const char* what;
        std::vector<std::int64_t> available;
        bool isSteady;
        bool hasForecast;
    };
    const Case cases[] = {
        { "0.8 GB lost over a week, nearly full", { 1'800'000'000, 1'700'000'000, 1'600'000'000, 1'500'000'000, 1'400'000'000,
                                                       1'300'000'000, 1'200'000'000, 1'000'000'000 }, true, false },
        { "spread of 999,999,999 bytes", { 2 * GB, 1'000'000'001 }, true, false },
        { "spread of 1 GB", { 2 * GB, 1 * GB }, false, true },
        { "1.5 GB down and back up to a 0.8 GB loss", { 10 * GB, 8'500'000'000, 9'200'000'000 }, false, false },
        { "space gained", { 1 * GB, 4 * GB }, false, false },
    };
    for (const Case& c : cases) {
        auto timeline = VolumeTimeline::make(daily(utc(2025, 1, 1), c.available));
        EXPECT_EQ(timeline.isSteady, c.isSteady) << c.what;
        EXPECT_EQ(timeline.forecast.has_value(), c.hasForecast) << c.what;
    }

    // Less than a day between the points: no forecast, however fast the loss.
    std::vector<VolumeTimeline::Point> hours { { utc(2025, 1, 1, 0), capacity, 50 * GB }, { utc(2025, 1, 1, 23), capacity, 40 * GB } };
    EXPECT_FALSE(VolumeTimeline::make(hours).forecast);
}

TEST(VolumeTimeline, ZoomedWhenNearlyFullOrNearlyEmpty)
{
    struct Case {
        std::int64_t used;
        VolumeTimeline::Scale scale;
    };
    const Case cases[] = {
        { 0, VolumeTimeline::Scale::zoomed },
        { 200 * GB, VolumeTimeline::Scale::zoomed },
        { 200 * GB + 1, VolumeTimeline::Scale::full },
        { 500 * GB, VolumeTimeline::Scale::full },
        { 800 * GB - 1, VolumeTimeline::Scale::full },
        { 800 * GB, VolumeTimeline::Scale::zoomed },
        { 1000 * GB, VolumeTimeline::Scale::zoomed },
    };
    for (const Case& c : cases) {
        EXPECT_EQ(VolumeTimeline::scale(c.used, capacity), c.scale) << c.used;
        auto timeline = VolumeTimeline::make(daily(utc(2025, 1, 1), { 700 * GB, capacity - c.used }));
        EXPECT_EQ(timeline.automaticScale, c.scale) << c.used; // by the latest point
    }
    EXPECT_EQ(VolumeTimeline::scale(0, 0), VolumeTimeline::Scale::full);
    EXPECT_EQ(HistoryTexts::zoomedScaleExplanation, "Zoomed by default while the disk is nearly full or nearly empty.");
}

TEST(SpaceForecast, Sentences)
{
    SpaceForecast weeks { utc(2025, 3, 3, 12), utc(2025, 3, 13, 12), 100 * GB, -2e9 };
    EXPECT_EQ(weeks.text(utcCalendar), "If space keeps going as it did from Mar 3, the 100 GB available run out in about 7 weeks.");
    EXPECT_EQ(weeks.runOutDate(), utc(2025, 5, 2, 12));

    SpaceForecast acrossNewYear { utc(2024, 12, 28, 12), utc(2025, 1, 5, 12), 2'500'000'000, -1e9 };
    EXPECT_EQ(acrossNewYear.text(utcCalendar),
        "If space keeps going as it did from Dec 28, 2024, the 2.50 GB available run out in about 3 days.");
    // The start date is the calendar's: 23:30 UTC is already the next day an hour east.
    EXPECT_EQ((SpaceForecast { utc(2025, 2, 28, 23, 30), utc(2025, 3, 5), GB, -1e8 }).text(Calendar::fixed(3600)),
        "If space keeps going as it did from Mar 1, the 1.00 GB available run out in about 10 days.");

    SpaceForecast exactlyAYear { utc(2025, 1, 1), utc(2025, 1, 11), 365 * GB, -1e9 };
    EXPECT_FALSE(exactlyAYear.isBeyondHorizon());
    EXPECT_EQ(exactlyAYear.text(utcCalendar), "If space keeps going as it did from Jan 1, the 365 GB available run out in about 12 months.");
    SpaceForecast beyond { utc(2025, 1, 1), utc(2025, 1, 11), 366 * GB, -1e9 };
    EXPECT_EQ(beyond.text(utcCalendar), "At this pace, room for more than a year.");
}
