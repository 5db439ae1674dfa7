#pragma once

#include <memory>
#include <string>
#include <vector>

namespace tarnwick {

class AppModel;
class DailyScans;
class HistoryStore;
class MainExecutor;
class Notifier;

// The window's side of the app, kept in a library of its own that only the app loads when
// there is a display: the command line then starts without loading the toolkit at all.
class DesktopHost {
public:
    class Window {
    public:
        virtual ~Window() = default;
        // Shows the window in front of the others, as when the app is started again.
        virtual void bringToFront() = 0;
    };

    virtual ~DesktopHost() = default;
    // The main window on the model, with the tray item; they must go before the model, the
    // history and the daily scans do, and take with them the work they started off the main
    // thread. history and dailyScans are null without a history.
    virtual std::unique_ptr<Window> openWindow(AppModel& model, HistoryStore* history, DailyScans* dailyScans) = 0;
    // Desktop notifications, once the window is open; null before.
    virtual Notifier* notifier() = 0;
};

// The entry point the window's library exports under this name. Null without a display;
// from then on the executor runs the toolkit's event loop.
using DesktopStart = DesktopHost* (*)(MainExecutor& executor, const std::vector<std::string>& words);
inline constexpr const char* desktopStartSymbol = "tarnwickDesktopStart";
inline constexpr const char* desktopLibraryName = "libtarnwick-desktop.so";

namespace DesktopLoader {
// Null when no display is named in the environment, or the library cannot be loaded (logged).
std::unique_ptr<DesktopHost> start(MainExecutor& executor, const std::vector<std::string>& words);
}

}
