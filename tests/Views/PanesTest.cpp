#include "Classification/TreeFixture.hpp"
#include "ViewTestSupport.hpp"
#include "Views/Breadcrumb.hpp"
#include "Views/FolderListModel.hpp"
#include "Views/InspectorView.hpp"
#include "Views/ListPane.hpp"
#include "Views/ViewFormat.hpp"
#include "Views/ViewTexts.hpp"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QSignalSpy>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QToolButton>

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

TEST(InspectorViewTest, ExplainsWhatCouldNotBeReadAndWhy)
{
    testing::TreeFixture fixture("root");
    NodeID locked = fixture.add("locked/", 0);
    NodeID link = fixture.add({ "shortcut", 0, NodeKind::symlink });
    fixture.add("movie.mkv", 2'000'000);
    fixture.builder().recordIssue(locked, IssueKind::permissionDenied, 13, "Permission denied");
    auto tree = fixture.finish();
    InspectorView inspector;

    inspector.showNode(tree, locked, nullptr, nullptr);
    EXPECT_EQ(inspector.titleText(), QStringLiteral("locked"));
    EXPECT_EQ(inspector.pathText(), QStringLiteral("/scan/locked"));
    EXPECT_EQ(inspector.value(ViewTexts::statusColumn), QStringLiteral("Access denied"));
    QStringList notes;
    for (auto* label : inspector.findChildren<QLabel*>())
        notes << label->text();
    QString joined = notes.join('\n');
    EXPECT_NE(joined.indexOf(QStringLiteral("isn't allowed to read this location")), -1);
    EXPECT_NE(joined.indexOf(QStringLiteral("(Permission denied)")), -1);
    EXPECT_FALSE(inspector.value(ViewTexts::lastChange).isEmpty()) << "a folder shows its last change inside";

    inspector.showNode(tree, link, nullptr, nullptr);
    EXPECT_EQ(inspector.value(ViewTexts::statusColumn), QStringLiteral("Link, not followed"));
    EXPECT_TRUE(inspector.value(ViewTexts::lastChange).isEmpty());
    EXPECT_FALSE(inspector.value(ViewTexts::modified).isEmpty());
    bool explained = false;
    for (auto* label : inspector.findChildren<QLabel*>())
        explained = explained || label->text() == QStringLiteral("Symbolic link. Its target isn't followed or counted.");
    EXPECT_TRUE(explained);
    EXPECT_TRUE(inspector.value(ViewTexts::owner).isEmpty()) << "no owner row before owners are known";
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
