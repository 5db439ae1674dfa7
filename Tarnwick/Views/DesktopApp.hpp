#pragma once

#include <memory>
#include <string>
#include <vector>

class QApplication;

namespace tarnwick {

class AppModel;
class MainExecutor;
class MainWindow;

// The app's life on a desktop: the Qt application, whose event loop becomes the main
// executor, so that the window, the model and the command line's commands all run on one
// thread, one after another.
class DesktopApp {
public:
    // The Qt platform to start with: QT_QPA_PLATFORM when set, the X server of DISPLAY when it
    // can be reached, the Wayland compositor of WAYLAND_DISPLAY when its socket exists and Qt
    // has a plugin for it. Empty when there is no display: the app then runs without a window.
    static std::string platform();

    // Null without a display. From then on the executor runs Qt's event loop.
    static std::unique_ptr<DesktopApp> start(MainExecutor& executor, const std::vector<std::string>& words);
    ~DesktopApp();
    DesktopApp(const DesktopApp&) = delete;
    DesktopApp& operator=(const DesktopApp&) = delete;

    // Shown at once, or minimized when the command line started the app in the background.
    std::unique_ptr<MainWindow> openWindow(AppModel& model);
    // A window made elsewhere, shown the same way. Started in the background (at login) with
    // the tray keeping the app, it stays hidden until the tray opens it.
    enum class Start { window, inTray };
    void show(MainWindow& window, Start start);

    // Hands the executor's work to Qt's event loop, which must exist and outlive every post.
    static void useQtLoop(MainExecutor& executor);

    // The look of the window: the Fusion style with a light palette and rounded controls.
    static void applyStyle(QApplication& application);

private:
    DesktopApp(std::string platform, bool background);

    std::vector<std::string> m_arguments;
    std::vector<char*> m_argv;
    int m_argc = 0;
    bool m_background = false;
    std::unique_ptr<QApplication> m_application;
};

}
