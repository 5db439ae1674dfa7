#include "Classification/TreeFixture.hpp"
#include "ViewTestSupport.hpp"
#include "Views/Breadcrumb.hpp"
#include "Views/FolderListModel.hpp"
#include "Views/InspectorView.hpp"
#include "Views/ListPane.hpp"
#include "Views/MapLegend.hpp"
#include "Views/SortHeader.hpp"
#include "Views/ViewFormat.hpp"
#include "Views/ViewTexts.hpp"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QSignalSpy>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QToolButton>

#include <ctime>

namespace tarnwick {
namespace {

using testing::waitFor;

QString cell(const QAbstractItemModel& model, int row, int column)
{
    return model.data(model.index(row, column), Qt::DisplayRole).toString();
}

TEST(FolderListModelTest, ListsTheLargestChildrenWithTheRestOnOneRow)
{
    testing::TreeFixture fixture("many");
    for (int i = 0; i < FolderListModel::limit + 5; ++i)
        fixture.add("file" + std::to_string(i) + ".txt", 1000 + i);
    auto tree = fixture.finish();
    FolderListModel model;
    model.setFolder(tree, NodeID::root());
    ASSERT_EQ(model.rowCount(), FolderListModel::limit + 1);
    int rest = FolderListModel::limit;
    EXPECT_TRUE(model.isRestRow(rest));
    EXPECT_FALSE(model.isRestRow(rest - 1));
    EXPECT_EQ(cell(model, rest, FolderListModel::name), ViewTexts::moreItems(QStringLiteral("5")));
    EXPECT_EQ(model.data(model.index(rest, 0), FolderListModel::nodeRole).toInt(), -1);
    // The five smallest make up the rest: 1000 to 1004 bytes.
    EXPECT_EQ(cell(model, rest, FolderListModel::size), ViewFormat::size(5010));
    EXPECT_EQ(cell(model, 0, FolderListModel::name), QString::fromStdString("file" + std::to_string(FolderListModel::limit + 4) + ".txt"));
}

TEST(FolderListModelTest, ShowsLowerBoundsKindsAndStatusWords)
{
    testing::TreeFixture fixture("root");
    fixture.add({ "link", 0, NodeKind::symlink });
    fixture.add({ "Photos.photoslibrary/", 0, NodeKind::package });
    fixture.add("Photos.photoslibrary/a.jpg", 5000);
    NodeID unread = fixture.add("unread/", 0);
    fixture.add("song.mp3", 4000);
    fixture.builder().markContentsUnready(unread);
    fixture.builder().addSizesWithoutNodes(unread, 3000, 3000, true);
    auto tree = fixture.finish();
    FolderListModel model;
    model.setFolder(tree, NodeID::root());
    auto row = [&](const std::string& path) { return *model.rowOf(fixture.id(path)); };
    EXPECT_EQ(cell(model, row("link"), FolderListModel::status), QStringLiteral("Link, not followed"));
    EXPECT_EQ(cell(model, row("Photos.photoslibrary"), FolderListModel::status), QStringLiteral("Package"));
    EXPECT_EQ(cell(model, row("unread"), FolderListModel::status), QStringLiteral("Not scanned"));
    EXPECT_TRUE(cell(model, row("unread"), FolderListModel::size).startsWith(QStringLiteral("≥")));
    EXPECT_FALSE(cell(model, row("song.mp3"), FolderListModel::size).startsWith(QStringLiteral("≥")));
    EXPECT_EQ(cell(model, row("song.mp3"), FolderListModel::status), QString());
    EXPECT_EQ(cell(model, row("link"), FolderListModel::kind), ViewTexts::symlinkKind);
    EXPECT_FALSE(model.rowOf(fixture.id("Photos.photoslibrary/a.jpg")).has_value()) << "only the open folder's own children";
}

TEST(ListPaneTest, TheRestRowStaysLastWhicheverWayItIsSorted)
{
    testing::TreeFixture fixture("many");
    for (int i = 0; i < FolderListModel::limit + 3; ++i)
        fixture.add("f" + std::to_string(i), 10 + i);
    auto tree = fixture.finish();
    ListPane pane;
    pane.showFolder(tree, NodeID::root());
    QAbstractItemModel& shown = *pane.table()->model();
    for (int column : { FolderListModel::name, FolderListModel::size, FolderListModel::kind }) {
        for (Qt::SortOrder order : { Qt::AscendingOrder, Qt::DescendingOrder }) {
            pane.table()->sortByColumn(column, order);
            EXPECT_EQ(shown.data(shown.index(shown.rowCount() - 1, 0), FolderListModel::nodeRole).toInt(), -1) << column << " " << order;
        }
    }
    // Ascending by size puts the smallest listed child first.
    pane.table()->sortByColumn(FolderListModel::size, Qt::AscendingOrder);
    EXPECT_EQ(cell(shown, 0, FolderListModel::name), QStringLiteral("f3"));

    // The rest row is not an item to select; a preview's rows are not selectable at all.
    QSignalSpy selected(&pane, &ListPane::nodeSelected);
    pane.table()->selectRow(shown.rowCount() - 1);
    ASSERT_EQ(selected.count(), 1);
    EXPECT_FALSE(selected.takeFirst().at(0).value<std::optional<NodeID>>().has_value());
    pane.setInteractive(false);
    pane.table()->selectRow(0);
    EXPECT_FALSE(pane.selectedNode().has_value());
}

TEST(ListPaneTest, NamesKeepRoomAtEveryWidthTheWindowGivesThePane)
{
    testing::TreeFixture fixture("folder");
    fixture.add("a-name-long-enough-to-need-room.txt", 1000);
    fixture.add("Documents/letter.pdf", 500);
    auto tree = fixture.finish();
    for (int width : { 360, 460, 640, 900 }) {
        ListPane pane;
        pane.resize(width, 400);
        pane.show();
        pane.showFolder(tree, NodeID::root());
        QApplication::processEvents();
        QTableView& table = *pane.table();
        EXPECT_GE(table.columnWidth(FolderListModel::name), std::min(150, width - 84 - 104 - 20)) << width;
        // Nothing in the folder has a status: the column stays out of the way.
        EXPECT_TRUE(table.isColumnHidden(FolderListModel::status)) << width;
        EXPECT_EQ(table.isColumnHidden(FolderListModel::kind), width < 460) << width;
    }
}

// The arrow points the way the values run: down for largest first, up for smallest first.
TEST(ListPaneTest, TheSortArrowPointsTheWayTheValuesRun)
{
    ListPane pane;
    auto* header = qobject_cast<SortHeader*>(pane.table()->horizontalHeader());
    ASSERT_NE(header, nullptr);
    EXPECT_EQ(header->indicator(FolderListModel::size), QStyleOptionHeader::SortDown) << "the list starts largest first";
    pane.table()->sortByColumn(FolderListModel::size, Qt::AscendingOrder);
    EXPECT_EQ(header->indicator(FolderListModel::size), QStyleOptionHeader::SortUp);
    EXPECT_EQ(header->indicator(FolderListModel::name), QStyleOptionHeader::None);
}

// The bar under the item's name shows the groups of the map's colour mode, as the legend names
// them, and content types again when the map is coloured by them.
TEST(InspectorViewTest, TheBarFollowsTheColourMode)
{
    testing::TreeFixture fixture("root");
    // Changed in 2001 and an hour ago, in seconds since 2001.
    auto anHourAgo = static_cast<std::int32_t>(std::time(nullptr) - 978'307'200 - 3600);
    fixture.add(testing::TreeFixture::Item { .path = "a/old.bin", .allocated = 3'000'000, .modified = 1000 });
    fixture.add(testing::TreeFixture::Item { .path = "a/seen.mp4", .allocated = 1'000'000, .modified = anHourAgo });
    auto tree = fixture.finish();
    auto content = ContentMap::build(tree);
    InspectorView inspector;
    inspector.showNode(tree, fixture.id("a"), content, nullptr);
    ASSERT_TRUE(waitFor([&] { return inspector.contentShares().size() == 2; }));
    std::vector<QString> byContent = inspector.stripLabels();

    auto hidden = ColorMap::make(ColorMode::lastModified, tree);
    std::vector<QString> expected;
    for (const LegendContent::Item& item : LegendContent::make(*hidden, *tree, fixture.id("a"), nullptr, std::nullopt).items)
        expected.push_back(item.label);
    ASSERT_EQ(expected.size(), 2u);
    inspector.setColors(hidden);
    ASSERT_TRUE(waitFor([&] { return inspector.stripLabels() == expected; }));
    EXPECT_NE(expected, byContent);

    inspector.setColors(ColorMap::make(ColorMode::contentType, tree));
    ASSERT_TRUE(waitFor([&] { return inspector.stripLabels() == byContent; }));
}

TEST(InspectorViewTest, ContentSharesArriveFromTheBackgroundLargestFirst)
{
    testing::TreeFixture fixture("root");
    fixture.add("a/clip.mp4", 1'000'000);
    fixture.add("a/song.mp3", 3'000'000);
    fixture.add("a/page.pdf", 2'000'000);
    auto tree = fixture.finish();
    auto content = ContentMap::build(tree);
    InspectorView inspector;
    inspector.showNode(tree, fixture.id("a"), content, nullptr);
    EXPECT_TRUE(inspector.contentShares().empty());
    ASSERT_TRUE(waitFor([&] { return inspector.contentShares().size() == 3; }));
    EXPECT_EQ(inspector.contentShares()[0].category, ContentCategory::music);
    EXPECT_EQ(inspector.contentShares()[1].category, ContentCategory::documents);
    EXPECT_EQ(inspector.contentShares()[2].category, ContentCategory::video);

    // A late answer for an item no longer shown is dropped.
    inspector.showNode(tree, fixture.id("a/song.mp3"), content, nullptr);
    inspector.showNode(tree, fixture.id("a/clip.mp4"), content, nullptr);
    ASSERT_TRUE(waitFor([&] { return inspector.contentShares().size() == 1; }));
    waitFor([] { return true; });
    EXPECT_EQ(inspector.contentShares()[0].category, ContentCategory::video);
}

TEST(BreadcrumbTest, FoldsTheMiddleOfADeepWayAndOpensWhatIsClicked)
{
    testing::TreeFixture fixture("root");
    NodeID deepest = fixture.add("a/b/c/d/e/f/g/file", 10);
    auto tree = fixture.finish();
    Breadcrumb crumbs;
    QSignalSpy chosen(&crumbs, &Breadcrumb::folderChosen);
    NodeID folder = *tree->parent(deepest);
    crumbs.showPath(tree, folder);
    EXPECT_EQ(crumbs.names(), (QStringList { "scan", "d", "e", "f", "g" }));
    auto buttons = crumbs.findChildren<QToolButton*>();
    ASSERT_EQ(buttons.size(), 5);
    EXPECT_FALSE(buttons.back()->isEnabled()) << "the open folder is where the way ends";
    buttons.front()->click();
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen.takeFirst().at(0).value<NodeID>(), NodeID::root());

    crumbs.showPath(tree, fixture.id("a/b"));
    EXPECT_EQ(crumbs.names(), (QStringList { "scan", "a", "b" }));
}

}
}
