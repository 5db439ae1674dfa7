#include "Classification/TreeFixture.hpp"
#include "ViewTestSupport.hpp"
#include "Views/MapLegend.hpp"
#include "Views/MapPalette.hpp"
#include "Views/ScanBanner.hpp"
#include "Views/SunburstView.hpp"
#include "Views/ViewTexts.hpp"

#include <gtest/gtest.h>

#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <set>

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

// A scan's previews, and the finished tree that replaces them, are drawn off the main thread:
// until a new picture is ready the last one stays on show, never an empty map; once the scan's
// pictures are gone, opening a folder draws at once again.
TEST_F(SunburstViewTest, AScansPicturesAreDrawnOffTheMainThreadWhileTheLastStaysOnShow)
{
    auto chain = [](int depth) {
        testing::TreeFixture fixture("scan");
        std::string path;
        for (int level = 0; level < depth; ++level)
            path += "level" + std::to_string(level) + "/";
        fixture.add(path + "file.mp4", 50'000'000);
        return fixture.finish();
    };
    auto progress = std::make_shared<ScanProgress>();
    auto colors = [](const std::shared_ptr<const ScanTree>& tree) { return ColorMap::make(ColorMode::contentType, tree); };
    auto shallow = chain(1);
    progress->setLatestPreview(std::make_shared<ScanPreview>(ScanPreview { shallow, 1, 3 }));
    map.watchScan(progress, QStringLiteral("scan"), std::nullopt, colors);
    ASSERT_EQ(map.tree(), shallow);
    ASSERT_TRUE(waitFor([&] { return !map.isDrawing(); }));
    QRgb background = map.grab().toImage().pixel(2, 2);
    auto drawnAt = [&](QPointF point) { return map.grab().toImage().pixel(point.toPoint()) != background; };
    auto shallowSector = sectorOf(map, shallow->children(NodeID::root())[0]);
    ASSERT_TRUE(shallowSector.has_value());
    QPointF inShallow = pointIn(map.currentGeometry(), *shallowSector);
    ASSERT_TRUE(drawnAt(inShallow));

    // A deeper preview reaches farther out than the shallow one's rings.
    auto deep = chain(6);
    progress->setLatestPreview(std::make_shared<ScanPreview>(ScanPreview { deep, 2, 8 }));
    ASSERT_TRUE(waitFor([&] { return map.tree() == deep; }));
    NodeID outermost = deep->children(NodeID::root())[0];
    while (deep->childCount(outermost) > 0)
        outermost = deep->children(outermost)[0];
    auto outer = sectorOf(map, outermost);
    ASSERT_TRUE(outer.has_value());
    QPointF inOuter = pointIn(map.currentGeometry(), *outer, 0.5, 0.5);
    ASSERT_TRUE(waitFor([&] { return !map.isDrawing(); }));
    EXPECT_TRUE(drawnAt(inOuter));

    // The finished tree is one file: until its picture comes, the deep preview stays.
    map.endScanWatch();
    auto finished = chain(0);
    map.showTree(finished, NodeID::root(), std::nullopt);
    map.setColors(colors(finished));
    EXPECT_TRUE(map.isDrawing());
    EXPECT_TRUE(drawnAt(inOuter));
    ASSERT_TRUE(waitFor([&] { return !map.isDrawing(); }));
    EXPECT_FALSE(drawnAt(inOuter));

    // Opening a folder after the scan draws at once.
    NodeID first = deep->children(NodeID::root())[0];
    map.showTree(deep, first, std::nullopt);
    EXPECT_FALSE(map.isDrawing());
    auto opened = sectorOf(map, deep->children(first)[0]);
    ASSERT_TRUE(opened.has_value());
    EXPECT_TRUE(drawnAt(pointIn(map.currentGeometry(), *opened)));
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

    // Clicking them is no dead end: the largest of them is selected, which the list shows.
    QSignalSpy selected(&map, &SunburstView::nodeSelected);
    QTest::mouseClick(&map, Qt::LeftButton, {}, pointIn(map.currentGeometry(), *rest).toPoint());
    ASSERT_EQ(selected.count(), 1);
    auto chosen = selected.at(0).at(0).value<std::optional<NodeID>>();
    const auto& pieces = std::get<SunburstSector::SmallObjects>(rest->content);
    EXPECT_EQ(chosen, tree->children(NodeID::root())[static_cast<std::size_t>(pieces.lower)]);
}

// The names of a home-like map at the sizes the map gets in 1024 x 700, 1280 x 800 and
// 1920 x 1080 windows: every sector of a twentieth of a turn or more is named, whole inside it or
// beside the map; the names beside it stay in the view, clear of the rings and of each other.
TEST_F(SunburstViewTest, LargeSectorsAreNamedWithoutCuttingOrOverlapping)
{
    testing::TreeFixture fixture("alex");
    NodeID image = fixture.add("debian-12.5.0-amd64-DVD-1.iso", 900'000'000);
    fixture.add("Documents/Letters and applications from the last years/letter.odt", 400'000'000);
    fixture.add("Music/Albums/a.flac", 350'000'000);
    fixture.add("Pictures/Holidays in the mountains 2024/p.jpg", 300'000'000);
    fixture.add(".cache/thumbnails/large/t.png", 250'000'000);
    fixture.add("Projects/tarnwick-build-output-with-a-long-name/x.o", 120'000'000);
    fixture.add("Downloads/x.zip", 60'000'000);
    for (int i = 0; i < 30; ++i)
        fixture.add("Code/project-" + std::to_string(i) + "/src/main.cpp", 4'000'000);
    auto tree = fixture.finish();
    for (QSize size : { QSize(560, 520), QSize(720, 640), QSize(1180, 900) }) {
        map.resize(size);
        map.showTree(tree, NodeID::root(), std::nullopt);
        SunburstLabels labels = map.placeLabels();
        QRectF view(0, 0, size.width(), size.height());
        std::set<std::int32_t> named;
        for (const SunburstLabels::Inside& label : labels.inside)
            named.insert(label.node.value);
        for (const SunburstLabels::Outside& label : labels.outside) {
            named.insert(label.node.value);
            QRectF box(label.box.x, label.box.y, label.box.width, label.box.height);
            EXPECT_TRUE(view.contains(box)) << size.width() << " x " << size.height();
            for (const SunburstLabels::Outside& other : labels.outside)
                EXPECT_TRUE(&other == &label || !label.box.intersects(other.box));
        }
        EXPECT_TRUE(named.contains(image.value)) << "the disc image's sector has no name at " << size.width();
        for (const SunburstLayout::Ring& ring : map.currentLayout().rings) {
            for (const SunburstSector& sector : ring) {
                if (sector.node() && sector.span() >= 0.05) {
                    EXPECT_TRUE(named.contains(sector.node()->value)) << tree->name(*sector.node()) << " at " << size.width();
                }
            }
        }
    }
}

// In the changes view the map is paled by a veil; names on it are written in the colour that
// reads on the paled sector, not on the colour under the veil.
TEST_F(SunburstViewTest, NamesContrastWithTheSectorAsDrawn)
{
    testing::TreeFixture fixture("root");
    fixture.add("Videos/a.mp4", 500'000'000);
    fixture.add("Music/b.flac", 300'000'000);
    fixture.add("Code/c.cpp", 200'000'000);
    auto tree = fixture.finish();
    map.showTree(tree, NodeID::root(), std::nullopt);
    map.setColors(ColorMap::make(ColorMode::contentType, tree));
    auto changes = std::make_shared<SunburstView::ChangeMap>();
    for (bool veiled : { false, true }) {
        map.setChanges(veiled ? changes : nullptr, QStringLiteral("since Jun 7"));
        QImage drawn = map.grab().toImage();
        for (const SunburstSector& sector : map.currentLayout().rings.at(0)) {
            QColor under = drawn.pixelColor(pointIn(map.currentGeometry(), sector, 0.5, 0.92).toPoint() * map.devicePixelRatio());
            EXPECT_GE(MapPalette::contrast(map.labelColor(sector), under), 3.5)
                << tree->name(*sector.node()) << (veiled ? " under the veil" : "") << " on " << under.name().toStdString();
        }
    }
}

// Arrows move the selection around a ring and between rings; Return opens a folder.
TEST_F(SunburstViewTest, ArrowsMoveTheSelectionAndReturnOpens)
{
    testing::TreeFixture fixture("root");
    NodeID a = fixture.add("A/", 0);
    NodeID big = fixture.add("A/big.bin", 500'000'000);
    fixture.add("A/small.bin", 100'000'000);
    NodeID b = fixture.add("B/b.bin", 300'000'000);
    NodeID c = fixture.add("c.bin", 200'000'000);
    auto tree = fixture.finish();
    NodeID folderB = *tree->parent(b);
    map.showTree(tree, NodeID::root(), std::nullopt);
    // The window answers a selection by setting it on the map.
    QObject::connect(&map, &SunburstView::nodeSelected, &map, [this](std::optional<NodeID> node) { map.setSelection(node); });
    QSignalSpy opened(&map, &SunburstView::folderOpened);
    struct Step {
        Qt::Key key;
        NodeID selected;
    };
    const Step steps[] = {
        { Qt::Key_Right, a },         // nothing selected: the largest of the first ring
        { Qt::Key_Right, folderB },   // clockwise
        { Qt::Key_Right, c },
        { Qt::Key_Right, a },         // round the turn
        { Qt::Key_Left, c },          // and back
        { Qt::Key_Right, a },
        { Qt::Key_Up, big },          // out to the largest item inside
        { Qt::Key_Right, fixture.id("A/small.bin") },
        { Qt::Key_Down, a },          // back in
    };
    for (const Step& step : steps) {
        QTest::keyClick(&map, step.key);
        EXPECT_EQ(map.selection(), step.selected) << tree->name(step.selected) << " after key " << step.key;
    }
    QTest::keyClick(&map, Qt::Key_Return);
    ASSERT_EQ(opened.count(), 1);
    EXPECT_EQ(opened.at(0).at(0).value<NodeID>(), a);
}

// Another colour mode while a scan runs shows on the preview at once, without waiting for
// the next preview, which may be long in coming.
TEST_F(SunburstViewTest, AnotherColourModeRecoloursTheRunningScansPreview)
{
    auto progress = std::make_shared<ScanProgress>();
    auto tree = previewTree(3);
    progress->setLatestPreview(std::make_shared<ScanPreview>(ScanPreview { tree, 1, 4 }));
    ColorMode mode = ColorMode::contentType;
    map.watchScan(progress, QStringLiteral("scan"), std::nullopt,
        [&](const std::shared_ptr<const ScanTree>& shown) { return ColorMap::make(mode, shown); });
    ASSERT_EQ(map.tree(), tree);
    ASSERT_EQ(map.colors()->mode(), ColorMode::contentType);
    mode = ColorMode::lastModified;
    map.recolor();
    EXPECT_EQ(map.colors()->mode(), ColorMode::lastModified);
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

namespace tarnwick {

// At the sizes the map gets in 1024 x 700, 1280 x 800 and 1920 x 1080 windows, what the centre
// writes stays inside its disc: a long folder name wraps or shrinks, a size keeps its unit.
TEST_F(SunburstViewTest, TheCentresTextStaysInsideItsDisc)
{
    const std::string names[] { "alex", "Letters and applications from the last years", "tarnwick-build-output-with-a-long-name-and-more" };
    for (const std::string& name : names) {
        testing::TreeFixture fixture(name);
        fixture.add("a/file.bin", 1'234'500'000'000);
        fixture.add("b/file.bin", 900'000'000);
        auto tree = fixture.finish(TreeBuilder::Metadata::included, "/home/alex/" + name);
        for (QSize size : { QSize(320, 320), QSize(560, 520), QSize(720, 640), QSize(1180, 900) }) {
            map.resize(size);
            map.showTree(tree, NodeID::root(), std::nullopt);
            SunburstPainter::CenterText text = map.centerText();
            SunburstGeometry geometry = map.currentGeometry();
            QPointF center(geometry.center.x, geometry.center.y);
            ASSERT_GT(text.radius, 4);
            EXPECT_TRUE(text.detail.endsWith(QStringLiteral("TB")));
            for (const QRectF& box : { text.titleBox, text.detailBox }) {
                for (QPointF corner : { box.topLeft(), box.topRight(), box.bottomLeft(), box.bottomRight() }) {
                    QPointF offset = corner - center;
                    EXPECT_LE(std::hypot(offset.x(), offset.y()), text.radius)
                        << name << " at " << size.width() << " x " << size.height() << ": " << text.title.toStdString();
                }
            }
        }
    }
}

}
