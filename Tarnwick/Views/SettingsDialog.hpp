#pragma once

#include <QDialog>

#include <memory>
#include <string>

class QTabWidget;

namespace tarnwick {

class HistoryFeed;

class AlertsPage;
class DailyScans;
class DailyScansPage;
class HistoryPage;
class MenuBarPage;
class UserDefaults;

// Tarnwick's settings: alerts, the daily snapshot, the tray item, and the history.
class SettingsDialog : public QDialog {
    Q_OBJECT

public:
    enum class Page { alerts, dailyScans, menuBar, history };

    SettingsDialog(std::string defaultsPath, HistoryFeed& history, DailyScans* dailyScans, QWidget* parent = nullptr);

    void showPage(Page page);
    [[nodiscard]] Page currentPage() const;

    [[nodiscard]] AlertsPage* alerts() const { return m_alerts; }
    [[nodiscard]] DailyScansPage* dailyScans() const { return m_daily; }
    [[nodiscard]] MenuBarPage* menuBar() const { return m_menuBar; }
    [[nodiscard]] HistoryPage* history() const { return m_history; }

Q_SIGNALS:
    // The tray item's settings or what it is drawn from changed.
    void menuBarChanged();
    void historyCleared();

private:
    std::shared_ptr<UserDefaults> m_defaults;
    QTabWidget* m_tabs;
    AlertsPage* m_alerts;
    DailyScansPage* m_daily;
    MenuBarPage* m_menuBar;
    HistoryPage* m_history;
};

}
