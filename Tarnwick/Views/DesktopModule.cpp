#include "DesktopHost.hpp"
#include "Views/DesktopApp.hpp"
#include "Views/MainWindow.hpp"
#include "Views/SettingsDialog.hpp"
#include "Views/TrayItem.hpp"

#include "Platform/UserDefaults.hpp"

#include <atomic>

namespace tarnwick {

namespace {

class QtDesktopHost final : public DesktopHost {
public:
    explicit QtDesktopHost(std::unique_ptr<DesktopApp> app)
        : m_app(std::move(app))
    {
    }

    std::unique_ptr<Window> openWindow(AppModel& model, HistoryStore* history, DailyScans* dailyScans) override
    {
        struct OpenWindow final : Window {
            std::atomic<Notifier*>* notifierSlot = nullptr;
            std::unique_ptr<MainWindow> window;
            std::unique_ptr<TrayItem> tray; // after the window, so it goes first
            void bringToFront() override { window->bringToFront(); }
            ~OpenWindow() override
            {
                // The alert watch may still ask for the tray from its own thread.
                if (notifierSlot)
                    notifierSlot->store(nullptr);
            }
        };
        auto open = std::make_unique<OpenWindow>();
        open->notifierSlot = &m_notifier;
        MainWindow::Environment environment = MainWindow::Environment::standard();
        environment.history = history;
        environment.dailyScans = dailyScans;
        open->window = std::make_unique<MainWindow>(model, environment);
        MainWindow* window = open->window.get();
        auto showWindow = [window] { window->bringToFront(); };
        open->tray = std::make_unique<TrayItem>(environment.defaultsPath, window->history(), dailyScans,
            TrayItem::Actions {
                showWindow,
                [window] { window->openSettings(static_cast<int>(SettingsDialog::Page::menuBar)); },
                [window] { window->openSettings(); },
            });
        open->tray->watchWindow(window);
        QObject::connect(window, &MainWindow::menuBarSettingsChanged, open->tray.get(), &TrayItem::refresh);
        m_app->show(*window, open->tray->keepsAppRunning() ? DesktopApp::Start::inTray : DesktopApp::Start::window);
        m_notifier = open->tray.get();
        return open;
    }

    Notifier* notifier() override { return m_notifier.load(); }

private:
    std::unique_ptr<DesktopApp> m_app;
    std::atomic<Notifier*> m_notifier { nullptr };
};

}

}

extern "C" __attribute__((visibility("default"))) tarnwick::DesktopHost* tarnwickDesktopStart(
    tarnwick::MainExecutor& executor, const std::vector<std::string>& words)
{
    auto app = tarnwick::DesktopApp::start(executor, words);
    if (!app)
        return nullptr;
    return new tarnwick::QtDesktopHost(std::move(app));
}
