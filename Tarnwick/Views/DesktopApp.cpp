#include "DesktopApp.hpp"

#include "MainExecutor.hpp"
#include "MainWindow.hpp"
#include "Platform/AppLauncher.hpp"
#include "ViewTexts.hpp"

#include <QApplication>
#include <QDir>
#include <QIcon>
#include <QLibraryInfo>
#include <QMetaObject>
#include <QPalette>
#include <QStyleFactory>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace tarnwick {

namespace {

std::string environment(const char* name)
{
    const char* value = std::getenv(name);
    return value ? std::string(value) : std::string();
}

bool isSocket(const std::string& path)
{
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
}

// A local display ":N" is reachable when its socket accepts a connection; a remote one is
// taken on trust.
bool canReachX(const std::string& display)
{
    std::string local = display.starts_with("unix:") ? display.substr(4) : display;
    if (!local.starts_with(":"))
        return !display.empty();
    std::string number = local.substr(1, local.find('.') == std::string::npos ? std::string::npos : local.find('.') - 1);
    if (number.empty() || !std::all_of(number.begin(), number.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return false;
    std::string path = "/tmp/.X11-unix/X" + number;
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return false;
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    // The abstract name first, as X servers on Linux listen there too; then the file.
    std::string abstractName = std::string(1, '\0') + path;
    std::memcpy(address.sun_path, abstractName.data(), abstractName.size());
    bool reached = connect(fd, reinterpret_cast<sockaddr*>(&address), static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + abstractName.size())) == 0;
    if (!reached && path.size() < sizeof(address.sun_path)) {
        std::memset(address.sun_path, 0, sizeof(address.sun_path));
        std::memcpy(address.sun_path, path.data(), path.size());
        reached = connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
    }
    close(fd);
    return reached;
}

bool hasPlatformPlugin(const char* prefix)
{
    QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/platforms"));
    return !plugins.entryList({ QString::fromLatin1(prefix) + QStringLiteral("*.so") }, QDir::Files).isEmpty();
}

}

std::string DesktopApp::platform()
{
    if (std::string given = environment("QT_QPA_PLATFORM"); !given.empty())
        return given;
    if (std::string display = environment("DISPLAY"); !display.empty() && canReachX(display) && hasPlatformPlugin("libqxcb"))
        return "xcb";
    if (std::string wayland = environment("WAYLAND_DISPLAY"); !wayland.empty()) {
        std::string socket = wayland.starts_with("/") ? wayland : environment("XDG_RUNTIME_DIR") + "/" + wayland;
        if (isSocket(socket) && hasPlatformPlugin("libqwayland"))
            return "wayland";
    }
    return {};
}

DesktopApp::DesktopApp(std::string platform, bool background)
    : m_arguments { "tarnwick", "-platform", std::move(platform) }
    , m_background(background)
{
    for (std::string& argument : m_arguments)
        m_argv.push_back(argument.data());
    m_argv.push_back(nullptr);
    m_argc = static_cast<int>(m_arguments.size());
    m_application = std::make_unique<QApplication>(m_argc, m_argv.data());
    QApplication::setApplicationName(ViewTexts::appName);
    QApplication::setApplicationDisplayName(ViewTexts::appName);
    QApplication::setDesktopFileName(QStringLiteral("tarnwick"));
    // The installed icon, for window managers that take it from the window rather than from
    // the desktop entry; none when run from the build folder.
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("tarnwick")));
    applyStyle(*m_application);
}

DesktopApp::~DesktopApp() = default;

std::unique_ptr<DesktopApp> DesktopApp::start(MainExecutor& executor, const std::vector<std::string>& words)
{
    std::string chosen = platform();
    if (chosen.empty())
        return nullptr;
    bool background = std::find(words.begin(), words.end(), std::string(AppLauncher::backgroundWord)) != words.end();
    std::unique_ptr<DesktopApp> app(new DesktopApp(std::move(chosen), background));
    useQtLoop(executor);
    return app;
}

void DesktopApp::useQtLoop(MainExecutor& executor)
{
    executor.useLoop(MainExecutor::Loop {
        .post = [](std::function<void()> task) {
            if (QCoreApplication* application = QCoreApplication::instance())
                QMetaObject::invokeMethod(application, std::move(task), Qt::QueuedConnection);
        },
        .run = [] { QApplication::exec(); },
        // Queued, so a stop asked for before the loop runs ends it as soon as it starts.
        .quit = [] {
            if (QCoreApplication* application = QCoreApplication::instance())
                QMetaObject::invokeMethod(application, [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
        },
    });
}

std::unique_ptr<MainWindow> DesktopApp::openWindow(AppModel& model)
{
    auto window = std::make_unique<MainWindow>(model, MainWindow::Environment::standard());
    show(*window, Start::window);
    return window;
}

void DesktopApp::show(MainWindow& window, Start start)
{
    if (m_background && start == Start::inTray)
        return;
    if (m_background)
        window.showMinimized();
    else
        window.show();
}

void DesktopApp::applyStyle(QApplication& application)
{
    application.setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(0xF3, 0xF5, 0xF8));
    palette.setColor(QPalette::WindowText, QColor(0x1F, 0x29, 0x37));
    palette.setColor(QPalette::Base, QColor(0xFF, 0xFF, 0xFF));
    palette.setColor(QPalette::AlternateBase, QColor(0xF7, 0xF8, 0xFA));
    palette.setColor(QPalette::Text, QColor(0x1F, 0x29, 0x37));
    palette.setColor(QPalette::Button, QColor(0xFF, 0xFF, 0xFF));
    palette.setColor(QPalette::ButtonText, QColor(0x1F, 0x29, 0x37));
    palette.setColor(QPalette::Highlight, QColor(0xDC, 0xE6, 0xF9));
    palette.setColor(QPalette::HighlightedText, QColor(0x11, 0x18, 0x27));
    palette.setColor(QPalette::ToolTipBase, QColor(0x1F, 0x29, 0x37));
    palette.setColor(QPalette::ToolTipText, QColor(0xF9, 0xFA, 0xFB));
    palette.setColor(QPalette::PlaceholderText, QColor(0x9C, 0xA3, 0xAF));
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(0xB6, 0xBD, 0xC8));
    palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(0xB6, 0xBD, 0xC8));
    application.setPalette(palette);
    application.setStyleSheet(QStringLiteral(R"(
        QMainWindow { background: #F3F5F8; }
        #sidebar { background: #ECEFF3; }
        QListWidget#sources { background: transparent; outline: 0; }
        QToolBar#toolbar { background: #FFFFFF; border: none; border-bottom: 1px solid #E2E6EC; padding: 6px 10px; spacing: 4px; }
        QToolBar#toolbar QToolButton { border: none; border-radius: 7px; padding: 5px; }
        QToolBar#toolbar QToolButton:hover { background: #EEF1F5; }
        QToolBar#toolbar QToolButton:pressed { background: #E2E7EE; }
        QToolBar#toolbar QToolButton:checked { background: #DCE6F9; }
        QToolButton#crumb { border: none; border-radius: 6px; padding: 4px 6px; color: #4B5563; }
        QToolButton#crumb:hover { background: #EEF1F5; color: #111827; }
        QToolButton#crumb:disabled { color: #111827; font-weight: 600; }
        QComboBox#colorMode { border: 1px solid #D7DCE3; border-radius: 7px; padding: 4px 10px; background: #FFFFFF; min-width: 150px; }
        QComboBox#colorMode:hover { border-color: #B9C1CC; }
        QComboBox#colorMode::drop-down { border: none; width: 20px; }
        QPushButton { border: 1px solid #D7DCE3; border-radius: 8px; padding: 7px 16px; background: #FFFFFF; color: #1F2937; }
        QPushButton:hover { background: #F4F6F9; border-color: #C5CCD6; }
        QPushButton:pressed { background: #E9EDF2; }
        QPushButton[accent="true"] { background: #2F6FED; border: 1px solid #2F6FED; color: #FFFFFF; font-weight: 600; }
        QPushButton[accent="true"]:hover { background: #275FD0; }
        QPushButton#addFavorite { border: none; background: transparent; color: #4B5563; text-align: left; padding: 6px 16px; }
        QPushButton#addFavorite:hover { color: #2F6FED; }
        QPushButton#stopScan { padding: 5px 14px; }
        #card { background: #FFFFFF; border: 1px solid #E2E6EC; border-radius: 12px; }
        QTableView#folderList { background: transparent; border: none; selection-background-color: #DCE6F9; selection-color: #111827; }
        QTableView#folderList::item { padding-left: 4px; padding-right: 4px; }
        QHeaderView { background: transparent; }
        QHeaderView::section { background: transparent; border: none; border-bottom: 1px solid #E8EBF0; padding: 7px 8px; padding-right: 16px; color: #6B7280; font-weight: 600; }
        QHeaderView::down-arrow, QHeaderView::up-arrow { subcontrol-origin: padding; subcontrol-position: center right; width: 7px; height: 7px; right: 4px; }
        QScrollArea, QScrollArea > QWidget > QWidget { background: transparent; }
        QSplitter::handle { background: transparent; }
        QSplitter#mainSplit::handle { background: #E2E6EC; }
        QStatusBar { background: #FFFFFF; border-top: 1px solid #E2E6EC; color: #6B7280; }
        QStatusBar QLabel { color: #6B7280; padding: 2px 8px; }
        QToolTip { background: #1F2937; color: #F9FAFB; border: none; border-radius: 6px; padding: 6px 8px; }
        QProgressBar { background: #E8ECF1; border: none; border-radius: 2px; }
        QProgressBar::chunk { background: #2F6FED; border-radius: 2px; }
    )"));
}

}
