#include "History/HistoryStore.hpp"
#include "History/HistoryTexts.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "Support/TempFolder.hpp"
#include "ViewTestSupport.hpp"
#include "Views/FreeSpaceChart.hpp"
#include "Views/FreeSpaceDialog.hpp"
#include "Views/HistoryFeed.hpp"
#include "Views/ViewFormat.hpp"
#include "Views/ViewTexts.hpp"

#include <gtest/gtest.h>

#include <QChart>

namespace tarnwick {
namespace {

constexpr std::int64_t GB = 1'000'000'000;
const Calendar utcCalendar = Calendar::fixed(0);

// Days of a 500 GB disk: available space losing `pace` a day from `start`, with extra changes
// on some days.
std::vector<VolumeTimeline::Point> days(int count, std::int64_t start, std::int64_t pace, std::map<int, std::int64_t> extra = {})
{
    std::vector<VolumeTimeline::Point> points;
    Date first = Date(std::chrono::seconds(1'717'243'200));
    std::int64_t available = start;
    for (int day = 0; day < count; ++day) {
        if (day > 0)
            available -= pace;
        if (auto found = extra.find(day); found != extra.end())
            available += found->second;
        points.push_back({ first + std::chrono::days(day), 500 * GB, available });
    }
    return points;
}

}

TEST(FreeSpaceChart, MarksJumpsAndTellsTheForecast)
{
    FreeSpaceChart chart;
    chart.resize(700, 400);
    VolumeTimeline timeline = VolumeTimeline::make(days(20, 200 * GB, GB / 2, { { 9, -20 * GB } }));
    ASSERT_TRUE(timeline.forecast);
    ASSERT_EQ(timeline.jumps.size(), 1u);
    chart.setTimeline(timeline, utcCalendar);
    EXPECT_EQ(chart.markedJumps(), 1);
    EXPECT_EQ(chart.forecastText().toStdString(), timeline.forecast->text(utcCalendar));
    EXPECT_TRUE(chart.forecastText().startsWith(QString::fromUtf8(HistoryTexts::forecastOpening.data())));
    (void)chart.grab();
}

TEST(FreeSpaceChart, ScaleStartsAutomaticAndCanBeChanged)
{
    FreeSpaceChart chart;
    // 40 % used: the whole disk.
    chart.setTimeline(VolumeTimeline::make(days(10, 300 * GB, GB / 10)), utcCalendar);
    EXPECT_EQ(chart.scale(), VolumeTimeline::Scale::full);
    auto [low, high] = chart.verticalRange();
    EXPECT_DOUBLE_EQ(low, 0);
    EXPECT_GE(high, 500.0 * GB);

    // Nearly full: zoomed to the space measured, which stays inside the disk.
    chart.setTimeline(VolumeTimeline::make(days(10, 30 * GB, GB)), utcCalendar);
    EXPECT_EQ(chart.scale(), VolumeTimeline::Scale::zoomed);
    std::tie(low, high) = chart.verticalRange();
    EXPECT_GT(low, 0);
    EXPECT_LE(low, 21.0 * GB);
    EXPECT_GE(high, 30.0 * GB);
    EXPECT_LT(high, 100.0 * GB);
    chart.setScale(VolumeTimeline::Scale::full);
    EXPECT_DOUBLE_EQ(chart.verticalRange().first, 0);
}

TEST(FreeSpaceChart, SaysWhyThereIsNoForecast)
{
    struct Case {
        std::vector<VolumeTimeline::Point> points;
        QString sentence;
    };
    const Case cases[] {
        { {}, ViewTexts::noMeasurements },
        { days(1, 100 * GB, 0), ViewTexts::oneDayOnly },
        { days(7, 100 * GB, 100'000'000), ViewTexts::steady },
        { days(7, 100 * GB, -2 * GB), ViewTexts::noForecast },
    };
    for (const Case& c : cases) {
        FreeSpaceChart chart;
        chart.setTimeline(VolumeTimeline::make(c.points), utcCalendar);
        EXPECT_EQ(chart.forecastText(), c.sentence) << c.points.size();
    }
}

TEST(FreeSpaceDialog, ReadsTheVolumesRecordOffTheMainThread)
{
    fixtures::TempFolder folder;
    auto store = HistoryStore::open(folder / "History");
    ASSERT_TRUE(store);
    {
        Date now = std::chrono::system_clock::now();
        for (int day = 5; day >= 0; --day)
            ASSERT_TRUE((*store)->recordMeasurement("dev:8:1", { now - std::chrono::days(day), 500 * GB, (100 + day * 3) * GB, std::nullopt }));
        // index.json comes with the first snapshot; without one the record is not read.
        ASSERT_TRUE((*store)->save({ "/elsewhere", "dev:8:1" }, testing::tinySnapshot()));
    }
    auto freeNow = [] {
        auto space = VolumeIdentity::space("/");
        return space ? ViewTexts::freeOf(ViewFormat::size(space->available), ViewFormat::size(space->total)) : QString();
    };
    QString before = freeNow();
    HistoryFeed feed(store->get());
    FreeSpaceDialog dialog(QStringLiteral("Data"), { "/", "dev:8:1" }, feed);
    EXPECT_TRUE(dialog.isLoading());
    ASSERT_TRUE(testing::waitFor([&] { return !dialog.isLoading(); }));
    EXPECT_EQ(dialog.chart()->timeline().dayCount, 6);
    EXPECT_EQ(dialog.chart()->timeline().latest->available, 100 * GB);
    // Hovering the line gives the nearest day's figure.
    const auto& points = dialog.chart()->timeline().points;
    ASSERT_GE(points.size(), 2u);
    double firstDay = static_cast<double>(std::chrono::duration_cast<std::chrono::milliseconds>(points[0].date.time_since_epoch()).count());
    EXPECT_NE(dialog.chart()->valueNear(firstDay + 3'600'000).indexOf(ViewFormat::size(points[0].available)), -1)
        << dialog.chart()->valueNear(firstDay).toStdString();
    // The words give the free space now, as the sidebar does, not the record's latest day.
    QString after = freeNow();
    EXPECT_TRUE(dialog.summaryText() == before || dialog.summaryText() == after) << dialog.summaryText().toStdString();
    EXPECT_EQ(dialog.summaryText().indexOf(QStringLiteral("100 GB")), -1);
    EXPECT_EQ(dialog.windowTitle(), ViewTexts::freeSpaceOf(QStringLiteral("Data")));

    HistoryFeed none(nullptr);
    FreeSpaceDialog nothing(QStringLiteral("Data"), { "/", "dev:8:1" }, none);
    ASSERT_TRUE(testing::waitFor([&] { return !nothing.isLoading(); }));
    EXPECT_EQ(nothing.chart()->forecastText(), ViewTexts::noMeasurements);
}

}
