#pragma once

#include "DailyScans.hpp"
#include "MenuBar/MenuBarSegment.hpp"
#include "Notifier.hpp"

#include <QIcon>
#include <QObject>
#include <QPointer>
#include <QWidget>
#include <QString>

#include <functional>
#include <memory>
#include <string>
#include <vector>

class QAction;
class QMenu;
class QSystemTrayIcon;
class QTimer;

namespace tarnwick {

class HistoryFeed;
class MenuBarDisks;
class UserDefaults;

// The Linux form of the menu bar item: a tray icon whose picture and tooltip show the chosen
// disks' segments, with a menu that opens the window, takes a snapshot now and turns the daily
// snapshot on and off. Desktop notifications go through it. While it is shown and the daily
// snapshot is on, closing the window leaves the app running here.
class TrayItem : public QObject, public Notifier {
    Q_OBJECT

public:
    struct Actions {
        std::function<void()> openWindow;
        std::function<void()> openMenuBarSettings;
        std::function<void()> openSettings;
    };

    // Rereads the disks this often; the history and the settings also make it read them.
    static constexpr int refreshMilliseconds = 60'000;

    TrayItem(std::string defaultsPath, HistoryFeed& history, DailyScans* dailyScans, Actions actions, QObject* parent = nullptr);
    ~TrayItem() override;

    // Whether the desktop has a tray to show the item in.
    static bool isAvailable();

    // Reads the disks again, off the main thread, and redraws.
    void refresh();
    // Shown when the settings say so and the desktop has a tray.
    [[nodiscard]] bool isShown() const;
    // Whether closing the window should leave the app running in the tray.
    [[nodiscard]] bool keepsAppRunning() const;
    // Watches the window's closing: with the app kept running the window only hides; otherwise
    // the app ends.
    void watchWindow(QObject* window);

    [[nodiscard]] const std::vector<MenuBarSegment>& segments() const { return m_segments; }
    [[nodiscard]] QIcon icon() const;
    [[nodiscard]] QString toolTip() const;
    [[nodiscard]] QMenu* menu() const { return m_menu.get(); }
    [[nodiscard]] bool isRefreshing() const { return m_refreshing > 0; }
    // The last notification asked for, shown or not.
    [[nodiscard]] std::pair<QString, QString> lastNotification() const { return m_lastNotification; }

    // From any thread.
    void notify(const std::string& title, const std::string& body) override;

Q_SIGNALS:
    void refreshed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void show(std::vector<MenuBarSegment> segments);
    void rebuildMenu();
    void updateDailyActions();
    void deliver(const QString& title, const QString& body);
    // What the notification at the end of a snapshot asked for from the menu says.
    [[nodiscard]] QString snapshotOutcome() const;
    void applyVisibility();

    std::shared_ptr<UserDefaults> m_defaults; // shared with the reads off the main thread
    HistoryFeed& m_history;
    std::shared_ptr<MenuBarDisks> m_disks;
    DailyScans* m_dailyScans;
    DailyScans::ObserverID m_dailyObserver = 0;
    Actions m_actions;
    QSystemTrayIcon* m_icon;
    std::unique_ptr<QMenu> m_menu;
    QAction* m_snapshotNow = nullptr;
    QAction* m_daily = nullptr;
    QTimer* m_timer;
    std::vector<MenuBarSegment> m_segments;
    int m_refreshing = 0;
    bool m_wasRunning = false;
    bool m_iconShown = false;
    QPointer<QWidget> m_window;
    std::pair<QString, QString> m_lastNotification;
    bool m_snapshotAsked = false; // from the menu, so its end is told
    std::optional<Date> m_passBefore;  // when the pass before the one asked for started
};

}
