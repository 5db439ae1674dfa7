// Renders the window on a generated demo home folder, offscreen, into PNG files:
//     tarnwick_screenshots OUTPUT_FOLDER DEMO_FOLDER [LARGE_FOLDER]
// With LARGE_FOLDER, also the map filling in while that folder is being scanned.
#include "Alerts/SpaceAlertStore.hpp"
#include "AppModel.hpp"
#include "DailyScans.hpp"
#include "DemoTree.hpp"
#include "Favorites.hpp"
#include "History/HistoryStore.hpp"
#include "History/ScanRecorder.hpp"
#include "HistoryDemo.hpp"
#include "Platform/LoginItem.hpp"
#include "Platform/UserDefaults.hpp"
#include "MainExecutor.hpp"
#include "Scanning/ScanTree.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "Views/AlertsPage.hpp"
#include "Views/ChangesPane.hpp"
#include "Views/DesktopApp.hpp"
#include "Views/FreeSpaceChart.hpp"
#include "Views/FreeSpaceDialog.hpp"
#include "Views/HistoryPage.hpp"
#include "Views/MainWindow.hpp"
#include "Views/MenuBarPage.hpp"
#include "Views/SavedDayWindow.hpp"
#include "Views/SearchPane.hpp"
#include "Views/SettingsDialog.hpp"
#include "Views/SunburstView.hpp"
#include "Views/UnreadableSheet.hpp"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QMenu>
#include <QMessageBox>
#include <QPainter>
#include <QTableWidget>
#include <QTableView>
#include <QThread>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>

using namespace tarnwick;

namespace {

bool waitFor(const std::function<bool()>& done, int milliseconds = 120'000)
{
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > milliseconds)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(5);
    }
    // Let the last posted results and repaints land.
    for (int i = 0; i < 5; ++i)
        QCoreApplication::processEvents();
    return true;
}

bool save(QWidget& window, const QString& folder, const QString& name)
{
    QString path = folder + "/" + name + ".png";
    if (!window.grab().save(path)) {
        std::fprintf(stderr, "screenshots: cannot write %s\n", qPrintable(path));
        return false;
    }
    std::printf("screenshots: %s\n", qPrintable(path));
    return true;
}

// The window's history pictures: what changed in a week, a disk's month of free space, what a
// scan could not read and the settings, from a history made for the demo.
bool saveHistoryPictures(MainWindow& window, AppModel& model, const std::string& home, HistoryStore& store, const QString& output)
{
    (void)store.clear();
    const AppModel::Result weekAgo = *model.result();
    Date now = std::chrono::system_clock::now();
    const Date weekAgoDate = now - std::chrono::days(7) - std::chrono::hours(2);
    if (!ScanRecorder::record(store, weekAgo.analysis->redated(DateGroup::Boundaries::make(weekAgoDate, TimeZone::system())), weekAgoDate))
        return false;
    if (!HistoryDemo::makeToday(home) || !HistoryDemo::recordDiskMonth(store, now))
        return false;
    model.rescan();
    if (!waitFor([&] { return !model.runningScan() && model.result() && model.result()->tree != weekAgo.tree && !window.isBusy(); }))
        return false;
    const AppModel::Result today = *model.result();
    if (!ScanRecorder::record(store, today.analysis, today.finishedAt))
        return false;

    bool written = true;
    // A week ago on the map, in its own window marked as a past day.
    if (auto record = store.record(ScanRecorder::sourceFor(home)); record && !record->entries.empty()) {
        SavedDayWindow* day = window.openSavedDay(QString::fromStdString(home), record->entries.front().id);
        if (!day)
            return false;
        day->resize(1100, 720);
        waitFor([&] { return !day->isLoading() && !day->map()->isDrawing(); });
        written = save(*day, output, "past-day") && written;
        day->close();
    }
    window.changesAction()->trigger();
    window.changes()->setPeriod(HistoryPeriod::week);
    waitFor([&] { return !window.changes()->isLoading() && window.map()->changes() && !window.isBusy(); });
    written = save(window, output, "changes") && written;
    if (auto projects = today.tree->node(home + "/Projects")) {
        model.open(*projects);
        waitFor([&] { return !window.changes()->isLoading() && !window.isBusy(); });
        written = save(window, output, "changes-folder") && written;
    }
    window.changesAction()->trigger();
    model.open(NodeID::root());

    FreeSpaceDialog disk(QStringLiteral("System Disk"), HistorySource { "/", HistoryDemo::diskVolume }, window.history(), &window);
    disk.resize(760, 520);
    disk.show();
    waitFor([&] { return !disk.isLoading(); });
    written = save(disk, output, "free-space") && written;
    disk.close();

    UnreadableSheet unreadable(HistoryDemo::unreadableScan(home), NodeID::root(), home, &window);
    unreadable.show();
    waitFor([&] { return !unreadable.isLoading(); });
    written = save(unreadable, output, "unreadable") && written;
    unreadable.close();

    SettingsDialog* settings = window.openSettings(static_cast<int>(SettingsDialog::Page::alerts));
    settings->resize(780, 560);
    waitFor([&] { return !settings->alerts()->isMeasuring() && !settings->menuBar()->isPreviewing() && !settings->history()->isBusy(); });
    written = save(*settings, output, "settings-alerts") && written;
    for (auto [page, name] : { std::pair { SettingsDialog::Page::dailyScans, "settings-daily" }, std::pair { SettingsDialog::Page::menuBar, "settings-menubar" },
             std::pair { SettingsDialog::Page::history, "settings-history" } }) {
        settings->showPage(page);
        waitFor([] { return true; });
        written = save(*settings, output, name) && written;
    }
    settings->showPage(SettingsDialog::Page::history);
    settings->history()->askToClear();
    waitFor([] { return true; });
    if (QMessageBox* confirmation = settings->history()->confirmation()) {
        written = save(*confirmation, output, "clear-history") && written;
        confirmation->reject();
    }
    settings->close();
    return written;
}

}

int main(int argc, char** argv)
{
    if (argc != 3 && argc != 4) {
        std::fprintf(stderr, "usage: tarnwick_screenshots OUTPUT_FOLDER DEMO_FOLDER [LARGE_FOLDER]\n");
        return 2;
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    std::string demoParent = std::filesystem::absolute(argv[2]).lexically_normal().string();
    std::string home = demoParent + "/alex";
    // The demo's own settings, so that its favourites never touch the user's.
    std::string config = demoParent + "/config";
    setenv("XDG_CONFIG_HOME", config.c_str(), 1);
    setenv("XDG_DATA_HOME", (demoParent + "/data").c_str(), 1);
    std::filesystem::remove_all(config);
    // The demo folder stands for the user's home, where the owner colours look for apps.
    setenv("HOME", home.c_str(), 1);
    if (!DemoTree::make(home) || !DemoTree::makeApplications(demoParent + "/data/applications") || !HistoryDemo::makeWeekAgo(home))
        return 1;

    QApplication application(argc, argv);
    DesktopApp::applyStyle(application);
    QString output = QString::fromLocal8Bit(argv[1]);
    QDir().mkpath(output);
    MainExecutor executor;
    DesktopApp::useQtLoop(executor);
    AppModel model(executor);
    auto demoStore = HistoryStore::open(demoParent + "/data/tarnwick/History");
    if (!demoStore) {
        std::fprintf(stderr, "screenshots: %s\n", demoStore.error().message().c_str());
        return 1;
    }
    MainWindow::Environment environment { home, config + "/tarnwick/defaults.json", demoStore->get() };
    UserDefaults defaults(environment.defaultsPath);
    {
        Favorites favorites(defaults);
        favorites.add(home + "/Projects");
        favorites.add(home + "/Pictures");
        SpaceAlertStore alerts(defaults);
        (void)alerts.add("/", SpaceAlertStore::PlaceKind::disk, { SpaceAlert::Condition::DiskUsed { 90 } });
        (void)alerts.add(home + "/Projects", SpaceAlertStore::PlaceKind::folder, { SpaceAlert::Condition::Size { 3'000'000'000 } });
        (void)alerts.add(home + "/Downloads", SpaceAlertStore::PlaceKind::folder, { SpaceAlert::Condition::Growth { 500'000'000, "week" } });
    }
    // Each run starts without a history, so that the first pictures show none.
    (void)(*demoStore)->clear();
    // The daily snapshot as it looks after this morning's pass; its login item goes into the
    // demo's own configuration folder.
    DailyScans daily(DailyScans::Services { defaults, **demoStore, [] { return std::vector<HistorySource> {}; }, [] { return PowerState {}; },
        nullptr, LoginItem::standardPath(), "/usr/bin/tarnwick" });
    (void)daily.turnOn();
    Date morning = std::chrono::system_clock::now() - std::chrono::hours(2);
    DailyScans::Pass pass { morning, { { { "/", "dev:254:0" }, DailyScans::Outcome::saved, {} }, { { "/mnt/backup", "dev:8:17" }, DailyScans::Outcome::saved, {} } } };
    (void)defaults.set(DailyScans::lastPassKey, pass.toJSON());
    environment.dailyScans = &daily;
    MainWindow window(model, environment);
    // The window's own default size.
    window.resize(1280, 800);
    window.show();
    waitFor([] { return true; });
    bool written = save(window, output, "start");

    auto scope = ScopeResolver::resolve(home);
    if (!scope) {
        std::fprintf(stderr, "screenshots: %s\n", scope.error().title().data());
        return 1;
    }
    model.scan(*scope);
    if (!waitFor([&] { return !model.runningScan() && model.result() && !window.isBusy(); }))
        return 1;
    for (ColorMode mode : allColorModes) {
        model.setColorMode(mode);
        waitFor([&] { return !window.isBusy() && window.map()->colors(); });
        written = save(window, output, QStringLiteral("map-") + QString::fromStdString(std::string(ColorModes::commandLineName(mode)))) && written;
    }
    // A folder opened, with a file selected: the list and the inspector follow.
    model.setColorMode(ColorMode::contentType);
    const ScanTree& tree = *model.result()->tree;
    if (auto projects = tree.node(home + "/Projects/llm-notes")) {
        model.open(*projects);
        if (auto file = tree.node(home + "/Projects/llm-notes/models/mistral-7b-q4.gguf"))
            model.select(*file);
    }
    waitFor([&] { return !window.isBusy(); });
    written = save(window, output, "folder") && written;
    model.open(NodeID::root());

    // Search: the large files below the home, one of them chosen and shown on the map.
    window.search(QStringLiteral("*"));
    window.searchPane()->kindPicker()->setCurrentIndex(window.searchPane()->kindPicker()->findText(QStringLiteral("Files")));
    window.searchPane()->sizePicker()->setCurrentIndex(3);
    window.search(QString());
    window.searchPane()->results()->selectRow(0);
    waitFor([&] { return !window.isBusy(); });
    written = save(window, output, "search") && written;
    window.showSearch(false);
    model.open(NodeID::root());

    // The right-click menu of a folder on the map. A menu is a window of its own: it is drawn
    // onto the picture of the main window where it opened.
    if (auto pictures = tree.node(home + "/Pictures")) {
        waitFor([&] { return !window.isBusy(); });
        if (QMenu* menu = window.itemMenu(*pictures)) {
            QPoint at = window.map()->mapTo(&window, QPoint(window.map()->width() / 2 + 40, window.map()->height() / 2 - 60));
            menu->popup(window.mapToGlobal(at));
            waitFor([] { return true; });
            QPixmap picture = window.grab();
            QPainter painter(&picture);
            painter.drawPixmap(at, menu->grab());
            painter.end();
            menu->close();
            QString path = output + "/item-menu.png";
            written = picture.save(path) && written;
            std::printf("screenshots: %s\n", qPrintable(path));
        }
    }
    written = saveHistoryPictures(window, model, home, **demoStore, output) && written;

    if (argc == 4) {
        auto large = ScopeResolver::resolve(argv[3]);
        if (!large) {
            std::fprintf(stderr, "screenshots: %s\n", large.error().title().data());
            return 1;
        }
        model.scan(*large);
        // The first coloured preview.
        std::uint64_t shown = 0;
        const ScanTree* first = nullptr;
        bool caught = waitFor([&] {
            if (!model.runningScan())
                return true;
            const auto& tree = window.map()->tree();
            if (tree && window.map()->colors() && tree.get() != first) {
                first = first ? first : tree.get();
                ++shown;
            }
            return shown >= 1;
        });
        if (caught && model.runningScan())
            written = save(window, output, "scanning") && written;
        else
            std::fprintf(stderr, "screenshots: the scan of %s ended before its map filled in\n", argv[3]);
        model.cancelScan();
        waitFor([&] { return !model.runningScan(); });
    }
    return written ? 0 : 1;
}
