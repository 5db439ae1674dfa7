#include "Classification/TreeFixture.hpp"
#include "ViewTestSupport.hpp"
#include "Views/MapLegend.hpp"
#include "Views/ScanBanner.hpp"
#include "Views/SunburstView.hpp"
#include "Views/ViewTexts.hpp"

#include <gtest/gtest.h>

#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

namespace tarnwick {
namespace {

using testing::pointIn;
using testing::sectorOf;
using testing::waitFor;

std::shared_ptr<const ScanTree> previewTree(int files)
{
    testing::TreeFixture fixture("scan");
    for (int i = 0; i < files; ++i)
        fixture.add("Folder/file" + std::to_string(i) + ".mp4", 1'000'000 * (i + 1));
    return fixture.finish();
}

class SunburstViewTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        map.resize(600, 600);
        map.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&map));
    }

    SunburstView map;
};

TEST_F(SunburstViewTest, ARunningScanFillsTheMapFromItsLatestPreviewOnceColored)
{
    auto progress = std::make_shared<ScanProgress>();
    progress->setState({ 1234, "/scan/Folder" });
    auto first = previewTree(3);
    progress->setLatestPreview(std::make_shared<ScanPreview>(ScanPreview { first, 1, 4 }));
    std::shared_ptr<const ScanTree> colorless;
    map.watchScan(progress, QStringLiteral("scan"), std::nullopt, [&](const std::shared_ptr<const ScanTree>& tree) {
        // The second preview's colours are late: the map keeps the first until they come.
        return tree == colorless ? nullptr : ColorMap::make(ColorMode::contentType, tree);
    });
    EXPECT_TRUE(map.isWatchingScan());
    EXPECT_EQ(map.tree(), first);
    EXPECT_TRUE(map.scanBanner()->isVisible());
    EXPECT_NE(map.scanBanner()->itemText().indexOf(QStringLiteral("1,234")), -1);
    EXPECT_EQ(map.scanBanner()->pathText(), QStringLiteral("/scan/Folder"));

    colorless = previewTree(5);
    progress->setLatestPreview(std::make_shared<ScanPreview>(ScanPreview { colorless, 2, 6 }));
    progress->setState({ 5678, "/scan/Folder/deeper" });
    ASSERT_TRUE(waitFor([&] { return map.scanBanner()->pathText().endsWith(QStringLiteral("deeper")); }));
    EXPECT_EQ(map.tree(), first);

    auto third = previewTree(7);
    progress->setLatestPreview(std::make_shared<ScanPreview>(ScanPreview { third, 3, 8 }));
    ASSERT_TRUE(waitFor([&] { return map.tree() == third; }));
    ASSERT_NE(map.colors(), nullptr);

    // A preview is for looking: clicks do not open or select its nodes.
    QSignalSpy opened(&map, &SunburstView::folderOpened);
    QSignalSpy selected(&map, &SunburstView::nodeSelected);
    auto sector = sectorOf(map, third->children(NodeID::root())[0]);
    ASSERT_TRUE(sector.has_value());
    QTest::mouseClick(&map, Qt::LeftButton, {}, pointIn(map.currentGeometry(), *sector).toPoint());
    EXPECT_EQ(opened.count() + selected.count(), 0);

    QSignalSpy stop(&map, &SunburstView::stopRequested);
    QTest::mouseClick(map.scanBanner()->findChild<QPushButton*>(QStringLiteral("stopScan")), Qt::LeftButton);
    EXPECT_EQ(stop.count(), 1);

    map.endScanWatch();
    EXPECT_FALSE(map.scanBanner()->isVisible());
}

TEST_F(SunburstViewTest, ARescanKeepsTheMapItReplacesUntilItsFirstPreview)
{
    auto before = previewTree(4);
    map.showTree(before, NodeID::root(), std::nullopt);
    auto progress = std::make_shared<ScanProgress>();
    auto colors = [](const std::shared_ptr<const ScanTree>& tree) { return ColorMap::make(ColorMode::contentType, tree); };
    map.watchScan(progress, QStringLiteral("scan"), std::nullopt, colors, SunburstView::Start::keepShown);
    EXPECT_EQ(map.tree(), before);
    auto preview = previewTree(2);
    progress->setLatestPreview(std::make_shared<ScanPreview>(ScanPreview { preview, 1, 3 }));
    ASSERT_TRUE(waitFor([&] { return map.tree() == preview; }));

    // A scan of another place starts from an empty map.
    map.watchScan(std::make_shared<ScanProgress>(), QStringLiteral("other"), std::nullopt, colors);
    EXPECT_EQ(map.tree(), nullptr);
}

TEST_F(SunburstViewTest, AWholeDiskShowsItsFreeAndUnaccountedSpace)
{
    testing::TreeFixture fixture("disk");
    fixture.add("home/a.mkv", 300'000'000);
    fixture.add("usr/lib.so", 100'000'000);
    auto tree = fixture.finish();
    VolumeCapacity capacity { 1'000'000'000, 500'000'000 };
    map.showTree(tree, NodeID::root(), capacity);
    const auto& ring = map.currentLayout().rings.at(0);
    auto available = std::find_if(ring.begin(), ring.end(), [](const auto& s) { return std::holds_alternative<SunburstSector::Available>(s.content); });
    auto unaccounted = std::find_if(ring.begin(), ring.end(), [](const auto& s) { return std::holds_alternative<SunburstSector::Unaccounted>(s.content); });
    ASSERT_NE(available, ring.end());
    ASSERT_NE(unaccounted, ring.end());
    EXPECT_EQ(available->bytes, 500'000'000);
    EXPECT_EQ(unaccounted->bytes, 100'000'000);
    EXPECT_NE(map.describe(*available).indexOf(ViewTexts::available), -1);
    EXPECT_NE(map.describe(*available).indexOf(QStringLiteral("50 %")), -1);

    auto colors = ColorMap::make(ColorMode::contentType, tree);
    LegendContent legend = LegendContent::make(*colors, *tree, NodeID::root(), nullptr, capacity);
    ASSERT_GE(legend.items.size(), 2u);
    EXPECT_EQ(legend.items.back().label, ViewTexts::available);
    EXPECT_EQ(legend.items.back().share, QStringLiteral("50 %"));
    EXPECT_EQ(legend.items[legend.items.size() - 2].label, ViewTexts::unaccounted);

    // An open folder inside the disk shows no disk space.
    LegendContent inside = LegendContent::make(*colors, *tree, fixture.id("home"), nullptr, capacity);
    for (const auto& item : inside.items)
        EXPECT_NE(item.label, ViewTexts::available);
}

TEST_F(SunburstViewTest, ManySmallChildrenBecomeOneSectorDescribedAsSmallerItems)
{
    testing::TreeFixture fixture("many");
    fixture.add("big.iso", 900'000'000);
    for (int i = 0; i < 400; ++i)
        fixture.add("small/" + std::to_string(i) + ".txt", 0);
    for (int i = 0; i < 400; ++i)
        fixture.add("crumb" + std::to_string(i) + ".log", 200'000);
    auto tree = fixture.finish();
    map.showTree(tree, NodeID::root(), std::nullopt);
    const auto& ring = map.currentLayout().rings.at(0);
    auto rest = std::find_if(ring.begin(), ring.end(), [](const auto& s) { return std::holds_alternative<SunburstSector::SmallObjects>(s.content); });
    ASSERT_NE(rest, ring.end());
    EXPECT_NE(map.describe(*rest).indexOf(QStringLiteral("smaller items")), -1);
    // Far fewer sectors than children: only what is drawn is laid out.
    EXPECT_LT(ring.size(), 100u);
}

TEST_F(SunburstViewTest, TooltipsMarkLowerBoundsAndSharesOfTheOpenFolder)
{
    testing::TreeFixture fixture("root");
    fixture.add("unread/", 0);
    NodeID file = fixture.add("video.mp4", 750'000);
    fixture.add("other.bin", 250'000);
    fixture.builder().recordIssue(fixture.id("unread"), IssueKind::permissionDenied, 13, "Permission denied");
    fixture.builder().addSizesWithoutNodes(fixture.id("unread"), 1'000'000, 1'000'000, true);
    fixture.builder().markContentsUnready(fixture.id("unread"));
    auto tree = fixture.finish();
    map.showTree(tree, NodeID::root(), std::nullopt);
    auto sector = sectorOf(map, file);
    ASSERT_TRUE(sector.has_value());
    QString text = map.describe(*sector);
    EXPECT_NE(text.indexOf(QStringLiteral("video.mp4")), -1);
    EXPECT_NE(text.indexOf(QStringLiteral("750 KB")), -1);
    auto unread = sectorOf(map, fixture.id("unread"));
    ASSERT_TRUE(unread.has_value());
    ASSERT_TRUE(tree->isIncomplete(fixture.id("unread")));
    EXPECT_NE(map.describe(*unread).indexOf(QStringLiteral("≥")), -1);
    EXPECT_EQ(map.describe(*sector).indexOf(QStringLiteral("≥")), -1);
}

}
}
