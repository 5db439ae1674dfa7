#include "AgentTools.hpp"
#include "AppModel.hpp"
#include "Favorites.hpp"
#include "History/HistoryStore.hpp"
#include "History/ScanRecorder.hpp"
#include "Platform/UserDefaults.hpp"
#include "MainExecutor.hpp"
#include "Scanning/ScanTree.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "Support/TempFolder.hpp"
#include "ViewTestSupport.hpp"
#include "Views/Breadcrumb.hpp"
#include "Views/DesktopApp.hpp"
#include "Views/FolderListModel.hpp"
#include "Views/InspectorView.hpp"
#include "Views/ListPane.hpp"
#include "Views/MainWindow.hpp"
#include "Views/SavedDayWindow.hpp"
#include "Views/SearchPane.hpp"
#include "Views/MapLegend.hpp"
#include "Views/MapPalette.hpp"
#include "Views/ChangesPane.hpp"
#include "Views/SettingsDialog.hpp"
#include "Views/SourceSidebar.hpp"
#include "Views/StartView.hpp"
#include "Views/ViewFormat.hpp"
#include "Views/ViewTexts.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <QAction>
#include <QComboBox>
#include <QImage>
#include <QMenu>
#include <QMenuBar>
#include <QTableWidget>
#include <QListWidget>
#include <QPushButton>
#include <QStackedWidget>
#include <QTableView>
#include <QTest>

#include <set>
#include <thread>

namespace tarnwick {
namespace {

using testing::pointIn;
using testing::sectorOf;
using testing::tinySnapshot;
using testing::waitFor;

// A small home folder scanned for real, shown in a window rendered offscreen.
class MainWindowTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        scanned.makeFile("Movies/trip.mp4", 3'000'000);
        scanned.makeFile("Movies/clip.mov", 1'200'000);
        scanned.makeFile("Photos/one.jpg", 900'000);
        scanned.makeFile("Photos/two.jpg", 800'000);
        scanned.makeFile("Documents/report.pdf", 700'000);
        scanned.makeFile("Documents/notes.txt", 20'000);
        scanned.makeFile(".cache/thumbnails/blob.bin", 600'000);
        scanned.makeFile("backup.zip", 2'000'000);
        DesktopApp::useQtLoop(executor);
        model = std::make_unique<AppModel>(executor);
        MainWindow::Environment environment { scanned.path(), settings / "defaults.json", history.get() };
        window = std::make_unique<MainWindow>(*model, environment);
        window->resize(1280, 800);
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }

    void TearDown() override
    {
        window.reset();
        model.reset();
    }

    void scan()
    {
        ASSERT_TRUE(window->choose(QString::fromStdString(scanned.path())));
        ASSERT_TRUE(waitFor([&] { return !model->runningScan() && model->result() && !window->isBusy() && window->map()->colors(); }));
    }

    NodeID node(const std::string& relative) const
    {
        auto found = model->result()->tree->node(ScopeResolver::realPath(scanned / relative));
        EXPECT_TRUE(found.has_value()) << relative;
        return found.value_or(NodeID::root());
    }

    void click(NodeID target)
    {
        SunburstView& map = *window->map();
        std::optional<SunburstSector> sector = sectorOf(map, target);
        ASSERT_TRUE(sector.has_value());
        SunburstGeometry geometry = map.currentGeometry();
        QPointF point = pointIn(geometry, *sector, 0.5, 0.3);
        // The point reads back as the sector through the geometry's own hit testing.
        SunburstGeometry::Hit hit = geometry.hit({ point.x(), point.y() });
        ASSERT_EQ(hit.kind, SunburstGeometry::Hit::Kind::ring);
        ASSERT_EQ(map.currentLayout().sector(hit.index, hit.fraction), sector);
        QTest::mouseClick(&map, Qt::LeftButton, {}, point.toPoint());
        waitFor([&] { return !window->isBusy(); });
    }

    // Whether the sidebar lists a source of this kind at path.
    bool listed(SourceSidebar::Kind kind, const std::string& path) const
    {
        for (const auto& source : window->sidebar()->sources()) {
            if (source.kind == kind && source.path == path)
                return true;
        }
        return false;
    }

    fixtures::TempFolder scanned;
    fixtures::TempFolder settings;
    // The app's one history, which the window is given and the tests save into.
    std::unique_ptr<HistoryStore> history = std::move(*HistoryStore::open(settings / "History"));
    MainExecutor executor;
    std::unique_ptr<AppModel> model;
    std::unique_ptr<MainWindow> window;
};

TEST_F(MainWindowTest, StartsWithTheChoiceOfADiskOrAFolderAndExplainsAFailedChoice)
{
    EXPECT_EQ(window->pages()->currentWidget(), window->startView());
    // The sidebar reads the disks off the main thread and lists them a moment later.
    EXPECT_TRUE(waitFor([&] { return listed(SourceSidebar::Kind::home, scanned.path()); }));

    EXPECT_FALSE(window->choose(QStringLiteral("relative/place")));
    EXPECT_FALSE(model->runningScan().has_value());
    EXPECT_EQ(window->pages()->currentWidget(), window->startView());
}

TEST_F(MainWindowTest, RendersEveryColorModeWithItsOwnColorsAndLegend)
{
    scan();
    NodeID movies = node("Movies");
    fixtures::TempFolder pictures;
    std::set<QRgb> sectorColors;
    for (ColorMode mode : allColorModes) {
        window->colorModes()->setCurrentIndex(window->colorModes()->findData(static_cast<int>(mode)));
        Q_EMIT window->colorModes()->activated(window->colorModes()->currentIndex());
        ASSERT_EQ(model->colorMode(), mode);
        ASSERT_TRUE(waitFor([&] { return !window->isBusy() && window->map()->colors() && window->map()->colors()->mode() == mode; }))
            << ColorModes::title(mode);

        QImage picture = window->grab().toImage();
        std::string file = pictures / (std::string(ColorModes::commandLineName(mode)) + ".png");
        ASSERT_TRUE(picture.save(QString::fromStdString(file)));
        EXPECT_FALSE(QImage(QString::fromStdString(file)).isNull());

        // The map paints the sector in the colour the mode gives the folder.
        SunburstView& map = *window->map();
        const ColorMap& colors = *map.colors();
        QImage mapPicture = map.grab().toImage();
        std::optional<SunburstSector> sector = sectorOf(map, movies);
        ASSERT_TRUE(sector.has_value());
        QPointF inside = pointIn(map.currentGeometry(), *sector, 0.2, 0.15);
        QColor expected = MapPalette::forRing(MapPalette::color(colors.color(movies), colors), 0);
        QColor painted = mapPicture.pixelColor((inside * mapPicture.devicePixelRatio()).toPoint());
        EXPECT_NEAR(painted.red(), expected.red(), 3) << ColorModes::title(mode);
        EXPECT_NEAR(painted.green(), expected.green(), 3) << ColorModes::title(mode);
        EXPECT_NEAR(painted.blue(), expected.blue(), 3) << ColorModes::title(mode);
        sectorColors.insert(painted.rgb());

        const LegendContent& legend = window->legend()->content();
        bool scaleMode = mode == ColorMode::caches || mode == ColorMode::hiddenFromFinder || mode == ColorMode::onDiskVsSize;
        EXPECT_EQ(legend.gradient, scaleMode) << ColorModes::title(mode);
        if (!scaleMode) {
            EXPECT_FALSE(legend.items.empty()) << ColorModes::title(mode);
        }
    }
    // Video, a date and the gradients are not all one colour.
    EXPECT_GE(sectorColors.size(), 3u);
}

// A completed scan comes with the colours of every mode: the window shows each at once, the
// very maps the commands and the snapshot read, and makes none of its own for it.
TEST_F(MainWindowTest, ShowsEveryModeOfAFinishedScanAtOnceFromItsAnalysis)
{
    scan();
    const std::shared_ptr<const ScanAnalysis> analysis = model->result()->analysis;
    ASSERT_NE(analysis, nullptr);
    for (ColorMode mode : allColorModes) {
        model->setColorMode(mode);
        EXPECT_EQ(window->map()->colors().get(), analysis->colors(mode).get()) << ColorModes::title(mode);
    }
}

TEST_F(MainWindowTest, ClickingAFolderOnTheMapOpensItAndTheListAndInspectorFollow)
{
    scan();
    NodeID movies = node("Movies");
    click(movies);
    EXPECT_EQ(model->openFolder(), movies);
    EXPECT_EQ(window->map()->root(), movies);
    EXPECT_EQ(window->list()->model()->summary().node, movies);
    EXPECT_EQ(window->list()->model()->rowCount(), 2);
    EXPECT_EQ(window->inspector()->titleText(), QStringLiteral("Movies"));
    EXPECT_TRUE(window->breadcrumb()->names().contains(QStringLiteral("Movies")));

    // The centre goes back up, and back and forward walk the way again.
    SunburstGeometry geometry = window->map()->currentGeometry();
    QTest::mouseClick(window->map(), Qt::LeftButton, {}, QPoint(static_cast<int>(geometry.center.x), static_cast<int>(geometry.center.y)));
    EXPECT_EQ(model->openFolder(), NodeID::root());
    QTest::keyClick(window.get(), Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(model->openFolder(), movies);
    QTest::keyClick(window.get(), Qt::Key_Right, Qt::AltModifier);
    EXPECT_EQ(model->openFolder(), NodeID::root());
}

TEST_F(MainWindowTest, ClickingAFileOnTheMapSelectsItInTheListAndInspector)
{
    scan();
    NodeID backup = node("backup.zip");
    click(backup);
    EXPECT_EQ(model->openFolder(), NodeID::root());
    EXPECT_EQ(model->selection(), backup);
    EXPECT_EQ(window->list()->selectedNode(), backup);
    EXPECT_EQ(window->map()->selection(), backup);
    EXPECT_TRUE(window->inspector()->pathText().endsWith(QStringLiteral("/backup.zip")));
    const ScanTree& tree = *model->result()->tree;
    EXPECT_EQ(window->inspector()->value(ViewTexts::sizeOnDisk), ViewFormat::size(tree, backup));
    ASSERT_TRUE(waitFor([&] { return !window->inspector()->contentShares().empty(); }));
    EXPECT_EQ(window->inspector()->contentShares().front().category, ContentCategory::archives);

    // A click on nothing clears the selection everywhere.
    QTest::mouseClick(window->map(), Qt::LeftButton, {}, QPoint(2, 2));
    EXPECT_FALSE(model->selection().has_value());
    EXPECT_FALSE(window->list()->selectedNode().has_value());
}

TEST_F(MainWindowTest, SelectingARowSelectsOnTheMapAndActivatingAFolderOpensIt)
{
    scan();
    NodeID documents = node("Documents");
    std::optional<int> row = window->list()->visualRow(documents);
    ASSERT_TRUE(row.has_value());
    window->list()->table()->selectRow(*row);
    EXPECT_EQ(model->selection(), documents);
    EXPECT_EQ(window->map()->selection(), documents);
    EXPECT_EQ(window->inspector()->titleText(), QStringLiteral("Documents"));

    // Sorting by name keeps the selection on the same item.
    window->list()->table()->sortByColumn(FolderListModel::name, Qt::AscendingOrder);
    EXPECT_EQ(window->list()->selectedNode(), documents);

    Q_EMIT window->list()->table()->doubleClicked(window->list()->table()->model()->index(*window->list()->visualRow(documents), 0));
    EXPECT_EQ(model->openFolder(), documents);
    EXPECT_EQ(window->map()->root(), documents);
}

TEST_F(MainWindowTest, CommandsFromTheSocketRunOnTheWindowThreadAndMoveTheViews)
{
    scan();
    AgentTools tools(*model, executor);
    std::thread::id windowThread = std::this_thread::get_id();
    std::thread::id ranOn;
    AgentResult shown;
    std::atomic<bool> done = false;
    std::thread connection([&] {
        executor.runAndWait<bool>([&] {
            ranOn = std::this_thread::get_id();
            return true;
        });
        shown = tools.handle(AgentCommands::Request { "show", { { "path", scanned / "Photos" }, { "color", "modified" } }, false });
        done = true;
    });
    ASSERT_TRUE(waitFor([&] { return done.load(); }));
    connection.join();
    EXPECT_EQ(ranOn, windowThread);
    ASSERT_FALSE(shown.isError) << shown.text;
    NodeID photos = node("Photos");
    EXPECT_EQ(window->map()->root(), photos);
    EXPECT_EQ(window->list()->model()->summary().node, photos);
    EXPECT_EQ(window->colorModes()->currentData().toInt(), static_cast<int>(ColorMode::lastModified));
}

// A request as the socket's thread sends it, while this thread runs the window.
AgentResult handleAside(AgentTools& tools, const AgentCommands::Request& request)
{
    AgentResult result;
    std::atomic<bool> done = false;
    std::thread connection([&] {
        result = tools.handle(request);
        done = true;
    });
    bool finished = waitFor([&] { return done.load(); });
    connection.join();
    EXPECT_TRUE(finished);
    return result;
}

// show from the command line on an app it started: the window, hidden or minimised until then,
// comes forward; an app with no window says that nothing can be shown.
TEST_F(MainWindowTest, ShowBringsAHiddenWindowForwardOrSaysThereIsNone)
{
    scan();
    struct ThisWindow final : DesktopHost::Window {
        MainWindow* window = nullptr;
        void bringToFront() override { window->bringToFront(); }
    } thisWindow;
    thisWindow.window = window.get();
    AgentTools tools(*model, executor);
    AgentCommands::Request request { "show", { { "path", scanned / "Photos" } }, false };
    for (bool minimise : { false, true }) {
        if (minimise)
            window->showMinimized();
        else
            window->hide();
        tools.setWindow(&thisWindow);
        AgentResult shown = handleAside(tools, request);
        ASSERT_FALSE(shown.isError) << shown.text;
        EXPECT_TRUE(window->isVisible());
        EXPECT_FALSE(window->isMinimized());
        EXPECT_NE(shown.text.find("window is in front"), std::string::npos) << shown.text;
    }
    tools.setWindow(nullptr);
    AgentResult blind = handleAside(tools, request);
    EXPECT_NE(blind.text.find("without a window"), std::string::npos) << blind.text;
    ASSERT_TRUE(blind.structured && blind.structured->objectValue());
    EXPECT_EQ(*blind.structured->objectValue()->at("window").boolValue(), false);
}

TEST_F(MainWindowTest, RepaintingAndHoveringKeepTheLayout)
{
    scan();
    SunburstView& map = *window->map();
    // The legend arrives from the pool and may take a line more, which resizes the map once.
    ASSERT_TRUE(waitFor([&] {
        int before = map.layoutsMade();
        QTest::qWait(30);
        map.repaint();
        return map.layoutsMade() == before;
    }));
    int made = map.layoutsMade();
    std::optional<SunburstSector> sector = sectorOf(map, node("Movies"));
    ASSERT_TRUE(sector.has_value());
    for (double along : { 0.2, 0.5, 0.8 })
        QTest::mouseMove(&map, pointIn(map.currentGeometry(), *sector, along).toPoint());
    map.repaint();
    EXPECT_EQ(map.layoutsMade(), made);
    EXPECT_NE(map.describe(*sector).indexOf(QStringLiteral("Movies")), -1);

    window->resize(1000, 700);
    waitFor([] { return true; });
    map.repaint();
    EXPECT_GT(map.layoutsMade(), made);
}

TEST_F(MainWindowTest, FavoritesAndPlacesWithAHistoryAppearInTheSidebar)
{
    fixtures::TempFolder favorite;
    UserDefaults defaults(settings / "defaults.json");
    Favorites favorites(defaults);
    ASSERT_TRUE(favorites.add(favorite.path()));
    window->sidebar()->refresh();
    EXPECT_TRUE(waitFor([&] { return listed(SourceSidebar::Kind::favorite, favorite.path()); }));

    ASSERT_TRUE(history->save(HistorySource { "/home/ann/Projects", "dev:8:1" }, tinySnapshot()).has_value());
    // The save is announced: the sidebar lists the new place without being asked.
    ASSERT_TRUE(waitFor([&] {
        for (int row = 0; row < window->sidebar()->list()->count(); ++row) {
            if (window->sidebar()->list()->item(row)->text().contains(QStringLiteral("Projects")))
                return true;
        }
        return false;
    }));
    EXPECT_TRUE(listed(SourceSidebar::Kind::history, "/home/ann/Projects"));
    for (const auto& source : window->sidebar()->sources())
        EXPECT_NE(source.kind, SourceSidebar::Kind::section);
}

TEST_F(MainWindowTest, TheStatusBarSaysWhenASnapshotCouldNotBeSavedUntilOneIs)
{
    EXPECT_TRUE(window->historyProblem().isEmpty());
    HistorySource place { "/home/ann/Projects", "dev:8:1" };
    HistoryStore::SnapshotFiles files = tinySnapshot();
    // A file where the place's folder goes: the save can't make it.
    const std::string inTheWay = settings / "History" + "/" + HistoryStore::folderName(place);
    std::ofstream(inTheWay) << "in the way";
    ASSERT_FALSE(history->save(place, files));
    ASSERT_TRUE(waitFor([&] { return window->historyProblem().startsWith(QStringLiteral("The snapshot couldn't be saved: ")); }));
    EXPECT_TRUE(window->historyProblem().contains(QString::fromStdString(inTheWay))) << window->historyProblem().toStdString();

    std::filesystem::remove(inTheWay);
    ASSERT_TRUE(history->save(place, files));
    ASSERT_TRUE(waitFor([&] { return window->historyProblem().isEmpty(); }));
}

TEST_F(MainWindowTest, ARebuiltIndexIsToldInTheStatusBar)
{
    HistorySource place { "/home/ann/Projects", "dev:8:1" };
    ASSERT_TRUE(history->save(place, tinySnapshot()));
    window.reset();
    std::ofstream(settings / "History" + "/index.json", std::ios::trunc) << "{ not an index";
    history = std::move(*HistoryStore::open(settings / "History"));
    window = std::make_unique<MainWindow>(*model, MainWindow::Environment { scanned.path(), settings / "defaults.json", history.get() });
    EXPECT_TRUE(window->historyProblem().startsWith(QStringLiteral("The history's index was damaged."))) << window->historyProblem().toStdString();
}

TEST_F(MainWindowTest, ChangesTakeThePlaceOfTheListAndDrawOnTheMap)
{
    scan();
    // The recorder of the app is not part of this window: save the scan as it would, once as
    // the day before's snapshot and once as this scan's own.
    const AppModel::Result& result = *model->result();
    const Date dayBefore = result.finishedAt - std::chrono::hours(48);
    auto analysisThen = result.analysis->redated(DateGroup::Boundaries::make(dayBefore, TimeZone::system()));
    ASSERT_TRUE(ScanRecorder::record(*history, analysisThen, dayBefore));
    ASSERT_TRUE(ScanRecorder::record(*history, result.analysis, result.finishedAt));

    auto* stack = window->changes()->parentWidget();
    ASSERT_TRUE(stack);
    window->changesAction()->trigger();
    EXPECT_TRUE(window->changesAction()->isChecked());
    EXPECT_TRUE(window->changes()->isVisible());
    EXPECT_FALSE(window->list()->isVisible());
    ASSERT_TRUE(waitFor([&] { return !window->changes()->isLoading() && window->map()->changes(); }));
    EXPECT_EQ(window->changes()->headline(), ViewTexts::didNotChange(ViewFormat::shortName(*result.tree, NodeID::root())));

    // Opening a folder compares that folder.
    model->open(node("Movies"));
    ASSERT_TRUE(waitFor([&] { return !window->changes()->isLoading(); }));
    EXPECT_FALSE(window->changes()->message().isEmpty()); // under 10 MB: no snapshot keeps it

    window->changesAction()->trigger();
    EXPECT_FALSE(window->changes()->isVisible());
    EXPECT_TRUE(window->list()->isVisible());
    EXPECT_EQ(window->map()->changes(), nullptr);
}

TEST_F(MainWindowTest, SettingsOpenOnTheirPage)
{
    SettingsDialog* settings = window->openSettings(static_cast<int>(SettingsDialog::Page::history));
    ASSERT_TRUE(settings);
    EXPECT_EQ(settings->currentPage(), SettingsDialog::Page::history);
    EXPECT_EQ(window->openSettings(0), settings);
    EXPECT_EQ(settings->currentPage(), SettingsDialog::Page::alerts);
    EXPECT_TRUE(window->unreadableButton()->isHidden());
}

}
}

namespace tarnwick {
namespace {

QAction* menuAction(QMainWindow& window, const QString& menuTitle, const QString& text)
{
    for (QAction* menu : window.menuBar()->actions()) {
        if (menu->text() != menuTitle || !menu->menu())
            continue;
        for (QAction* action : menu->menu()->actions()) {
            if (action->text() == text)
                return action;
        }
    }
    return nullptr;
}

QAction* itemAction(QMenu& menu, const QString& text)
{
    for (QAction* action : menu.actions()) {
        if (action->text() == text)
            return action;
    }
    return nullptr;
}

}

TEST_F(MainWindowTest, SearchFindsByNameKindSizeAndAgeAndAResultShowsOnTheMap)
{
    scan();
    SearchPane& pane = *window->searchPane();
    window->search(QStringLiteral("jpg"));
    ASSERT_TRUE(pane.isVisible());
    ASSERT_TRUE(pane.found());
    EXPECT_EQ(pane.found()->matchCount, 2);
    ASSERT_EQ(pane.results()->rowCount(), 2);

    // A result opens its folder on the map and is selected there; the results stay.
    pane.results()->selectRow(1);
    NodeID chosen = pane.found()->items[1].node;
    EXPECT_EQ(model->openFolder(), node("Photos"));
    EXPECT_EQ(model->selection(), chosen);
    EXPECT_EQ(window->map()->selection(), chosen);
    EXPECT_EQ(pane.results()->rowCount(), 2);

    // Kind and size: the files of 1 MB and more, whatever their names; age: none of them is old.
    pane.kindPicker()->setCurrentIndex(pane.kindPicker()->findText(ViewTexts::searchFiles));
    pane.sizePicker()->setCurrentIndex(1);
    window->search(QString());
    ASSERT_TRUE(pane.found());
    std::set<NodeID> large;
    for (const TreeSearch::Item& item : pane.found()->items)
        large.insert(item.node);
    EXPECT_EQ(large, (std::set<NodeID> { node("Movies/trip.mp4"), node("Movies/clip.mov"), node("backup.zip") }));
    pane.agePicker()->setCurrentIndex(1);
    window->search(QString());
    EXPECT_EQ(pane.found()->matchCount, 0);

    // Below the open folder only.
    pane.agePicker()->setCurrentIndex(0);
    Q_EMIT pane.closeRequested();
    EXPECT_FALSE(pane.isVisible());
    model->open(node("Movies"));
    window->search(QStringLiteral("*"));
    EXPECT_EQ(pane.found()->matchCount, 2);
}

TEST_F(MainWindowTest, MenuActionsAndKeysDriveTheModel)
{
    scan();
    for (const QString& text : { ViewTexts::back, ViewTexts::forward, ViewTexts::up, ViewTexts::home })
        EXPECT_TRUE(menuAction(*window, ViewTexts::goMenu, text)) << text.toStdString();
    for (const QString& text : { ViewTexts::showChanges, ViewTexts::freeSpaceMenu, ViewTexts::unreadablePlaces })
        EXPECT_TRUE(menuAction(*window, ViewTexts::viewMenu, text)) << text.toStdString();
    EXPECT_TRUE(menuAction(*window, ViewTexts::helpMenu, ViewTexts::aboutApp));

    NodeID movies = node("Movies");
    model->open(movies);
    menuAction(*window, ViewTexts::goMenu, ViewTexts::up)->trigger();
    EXPECT_EQ(model->openFolder(), NodeID::root());
    menuAction(*window, ViewTexts::goMenu, ViewTexts::back)->trigger();
    EXPECT_EQ(model->openFolder(), movies);
    menuAction(*window, ViewTexts::goMenu, ViewTexts::home)->trigger();
    EXPECT_EQ(model->openFolder(), NodeID::root());
    model->open(movies);
    window->map()->setFocus();
    QTest::keyClick(window->map(), Qt::Key_Backspace);
    EXPECT_EQ(model->openFolder(), NodeID::root());

    // Ctrl+3 is the third colour mode.
    QTest::keyClick(window.get(), Qt::Key_3, Qt::ControlModifier);
    EXPECT_EQ(model->colorMode(), allColorModes[2]);

    // The item menu: favourites and a scan of the folder go to the sidebar and the model.
    std::unique_ptr<QMenu> menu(window->itemMenu(node("Photos/one.jpg")));
    ASSERT_TRUE(menu);
    for (const QString& text : { ViewTexts::showInFileManager, ViewTexts::openTerminalHere, ViewTexts::copyPath })
        EXPECT_TRUE(itemAction(*menu, text)) << text.toStdString();
    itemAction(*menu, ViewTexts::addToFavorites)->trigger();
    std::string photos = model->result()->tree->path(node("Photos"));
    EXPECT_TRUE(waitFor([&] { return listed(SourceSidebar::Kind::favorite, photos); }));
    itemAction(*menu, ViewTexts::scanThisFolder)->trigger();
    ASSERT_TRUE(waitFor([&] { return !model->runningScan() && model->result() && model->result()->tree->rootPath() == photos; }));
}

// The days the history keeps of the place on screen are in the Go menu too, not only in the
// sidebar's menu of that place.
TEST_F(MainWindowTest, TheGoMenuOpensTheSavedDaysOfThePlaceOnScreen)
{
    scan();
    QMenu* days = window->savedDaysMenu();
    Q_EMIT days->aboutToShow();
    ASSERT_EQ(days->actions().size(), 1);
    EXPECT_FALSE(days->actions().front()->isEnabled());

    ASSERT_TRUE(history->save(HistorySource { ScopeResolver::realPath(scanned.path()), "dev:8:1" }, testing::tinySnapshot()).has_value());
    ASSERT_TRUE(waitFor([&] {
        Q_EMIT days->aboutToShow();
        return !days->actions().empty() && days->actions().front()->isEnabled();
    }));
    days->actions().front()->trigger();
    EXPECT_TRUE(waitFor([&] { return !window->findChildren<SavedDayWindow*>().empty(); }));
}

}
