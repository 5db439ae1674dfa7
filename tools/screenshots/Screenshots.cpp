// Renders the window on a generated demo home folder, offscreen, into PNG files:
//     tarnwick_screenshots OUTPUT_FOLDER DEMO_FOLDER [LARGE_FOLDER]
// With LARGE_FOLDER, also the map filling in while that folder is being scanned.
#include "AppModel.hpp"
#include "DemoTree.hpp"
#include "Favorites.hpp"
#include "Platform/UserDefaults.hpp"
#include "MainExecutor.hpp"
#include "Scanning/ScanTree.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "Views/DesktopApp.hpp"
#include "Views/MainWindow.hpp"
#include "Views/SunburstView.hpp"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
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
    if (!DemoTree::make(home) || !DemoTree::makeApplications(demoParent + "/data/applications"))
        return 1;

    QApplication application(argc, argv);
    DesktopApp::applyStyle(application);
    QString output = QString::fromLocal8Bit(argv[1]);
    QDir().mkpath(output);
    MainExecutor executor;
    DesktopApp::useQtLoop(executor);
    AppModel model(executor);
    MainWindow::Environment environment { home, config + "/tarnwick/defaults.json", demoParent + "/data/tarnwick/History" };
    {
        UserDefaults defaults(environment.defaultsPath);
        Favorites favorites(defaults);
        favorites.add(home + "/Projects");
        favorites.add(home + "/Pictures");
    }
    MainWindow window(model, environment);
    window.resize(1440, 900);
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
