// Times what the window does on the main thread with a large scan: the first layout and
// painting of the map, repainting while hovering, a relayout after a resize, opening a
// folder, and the list of the open folder; and, for comparison, the colour maps that are
// made off the main thread:
//   mapview [FOLDER] [--runs N]
// FOLDER defaults to the 1,000,000-entry tree that bench/run.sh makes.
#include "Classification/ColorMap.hpp"
#include "Classification/ContentMap.hpp"
#include "Scanning/FileScanner.hpp"
#include "Scanning/ScanTree.hpp"
#include "TreeQueries/FolderSummary.hpp"
#include "AppModel.hpp"
#include "MainExecutor.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "Views/DesktopApp.hpp"
#include "Views/MainWindow.hpp"
#include "Views/FolderListModel.hpp"
#include "Views/SearchPane.hpp"
#include "Views/SunburstView.hpp"

#include <QApplication>
#include <QTimer>
#include <QMouseEvent>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

using namespace tarnwick;

namespace {

double milliseconds(const std::function<void()>& work)
{
    auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

void report(const char* name, int runs, const std::function<void()>& work)
{
    std::vector<double> times;
    for (int i = 0; i < runs; ++i)
        times.push_back(milliseconds(work));
    std::sort(times.begin(), times.end());
    std::printf("%-52s median %8.2f ms   fastest %8.2f ms\n", name, times[times.size() / 2], times.front());
}

}

int main(int argc, char** argv)
{
    std::string folder = "/var/tmp/tarnwick-bench/tree-1m";
    int runs = 9;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--runs") == 0 && i + 1 < argc)
            runs = std::max(1, std::atoi(argv[++i]));
        else
            folder = argv[i];
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    int qtArgc = 1;
    QApplication application(qtArgc, argv);
    DesktopApp::applyStyle(application);

    FileScanner::Options options;
    options.root = folder;
    FileScanner scanner(options);
    ScanOutcome outcome = scanner.scan();
    if (!outcome.tree) {
        std::fprintf(stderr, "mapview: cannot scan %s: %s\n", folder.c_str(), outcome.status.message.c_str());
        return 1;
    }
    std::shared_ptr<const ScanTree> tree = outcome.tree;
    std::printf("tree: %s, %d nodes\n", folder.c_str(), tree->count());

    std::shared_ptr<const ContentMap> content;
    report("content map (scan thread)", 1, [&] { content = ContentMap::build(tree); });
    report("last-modified colours (pool)", 1, [&] { ColorMap::make(ColorMode::lastModified, tree); });
    auto colors = ColorMap::make(ColorMode::contentType, tree, { content, nullptr, std::nullopt });

    SunburstView map;
    map.resize(800, 800);
    map.show();
    while (!map.windowHandle() || !map.windowHandle()->isExposed())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    NodeID root = NodeID::root();
    int widthStep = 0;
    report("show a scan: layout and first paint", runs, [&] {
        // A new size each time, so that nothing cached is reused.
        map.resize(800 + (++widthStep % 2), 800);
        map.showTree(tree, root, std::nullopt);
        map.setColors(colors);
        map.repaint();
    });
    std::size_t sectors = 0;
    for (const auto& ring : map.currentLayout().rings)
        sectors += ring.size();
    std::printf("%-52s %zu rings, %zu sectors, %d layouts so far\n", "  drawn", map.currentLayout().rings.size(), sectors, map.layoutsMade());
    int before = map.layoutsMade();
    int step = 0;
    report("hover and repaint (cached picture)", runs * 10, [&] {
        QPointF point(400 + 150 * std::sin(step * 0.3), 400 + 150 * std::cos(step * 0.3));
        ++step;
        QMouseEvent move(QEvent::MouseMove, point, map.mapToGlobal(point), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(&map, &move);
        map.repaint();
    });
    std::printf("%-52s %d\n", "  layouts made while hovering", map.layoutsMade() - before);
    NodeID largest = tree->children(root)[0];
    report("open the largest folder and paint", runs, [&] {
        map.showTree(tree, largest, std::nullopt);
        map.repaint();
        map.showTree(tree, root, std::nullopt);
    });
    FolderListModel list;
    report("list of the root (FolderSummary, 2000 rows)", runs, [&] { list.setFolder(tree, root); });
    NodeID widest = root;
    for (NodeID node { 0 }; node.value < tree->count(); ++node.value) {
        if (tree->childCount(node) > tree->childCount(widest))
            widest = node;
    }
    std::printf("widest folder: %d children\n", tree->childCount(widest));
    report("list of the widest folder", runs, [&] { list.setFolder(tree, widest); });
    // The window's search, as the search pane runs it on the main thread.
    auto now = std::chrono::system_clock::now();
    SearchPane::Query byName;
    byName.name = QStringLiteral("7");
    report("search by name below the root", runs, [&] { (void)SearchPane::run(*tree, root, byName, now); });
    SearchPane::Query filtered = byName;
    filtered.name = QStringLiteral("*.docx");
    filtered.kinds = { NodeKind::file };
    filtered.minimumSize = 100'000;
    filtered.unchangedDays = 30;
    report("search by pattern, kind, size and age", runs, [&] { (void)SearchPane::run(*tree, root, filtered, now); });
    report("search everything below the root", runs, [&] { (void)SearchPane::run(*tree, root, SearchPane::Query {}, now); });
    report("map of the widest folder: layout and paint", runs, [&] {
        map.showTree(tree, widest, std::nullopt);
        map.repaint();
        map.showTree(tree, root, std::nullopt);
    });

    // The whole window while the app scans the folder: the longest gap between two ticks of
    // a 5 ms timer on the event loop is the longest the window was unresponsive.
    MainExecutor executor;
    DesktopApp::useQtLoop(executor);
    AppModel model(executor);
    MainWindow window(model, MainWindow::Environment::standard());
    window.resize(1440, 900);
    // The window is on screen before the scan starts, as when a user picks a place in it; its
    // own first paint is a figure of its own.
    report("show the window: polish, layout, first paint", 1, [&] {
        window.show();
        while (!window.windowHandle() || !window.windowHandle()->isExposed())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QCoreApplication::processEvents();
    });
    auto scope = ScopeResolver::resolve(folder);
    if (!scope)
        return 1;
    double longestGap = 0;
    int ticks = 0;
    auto last = std::chrono::steady_clock::now();
    auto started = last;
    // The longest gaps, with when they ended and whether the scan was still running, say what
    // the window was doing: taking a preview or the finished tree.
    struct Gap {
        double milliseconds;
        double at;
        bool scanning;
    };
    std::vector<Gap> gaps;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, [&] {
        auto now = std::chrono::steady_clock::now();
        double gap = std::chrono::duration<double, std::milli>(now - last).count();
        longestGap = std::max(longestGap, gap);
        if (gap > 16)
            gaps.push_back({ gap, std::chrono::duration<double, std::milli>(now - started).count(), model.runningScan().has_value() });
        last = now;
        ++ticks;
        if (!model.runningScan() && ticks > 20)
            QCoreApplication::quit();
    });
    started = std::chrono::steady_clock::now();
    model.scan(*scope);
    last = std::chrono::steady_clock::now();
    tick.start(5);
    QCoreApplication::exec();
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    std::printf("%-52s %8.2f ms longest gap, %d ticks in %.2f s\n", "event loop during a scan with the window", longestGap, ticks, seconds);
    std::sort(gaps.begin(), gaps.end(), [](const Gap& a, const Gap& b) { return a.milliseconds > b.milliseconds; });
    for (std::size_t i = 0; i < std::min<std::size_t>(gaps.size(), 5); ++i)
        std::printf("  gap %7.2f ms, ending %7.1f ms after the start, %s\n", gaps[i].milliseconds, gaps[i].at,
            gaps[i].scanning ? "while scanning" : "after the scan");
    return 0;
}
