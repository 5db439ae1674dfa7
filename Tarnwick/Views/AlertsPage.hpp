#pragma once

#include "Alerts/AlertReading.hpp"
#include "Alerts/SpaceAlert.hpp"

#include <QWidget>

#include <map>
#include <memory>
#include <string>
#include <vector>

class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTreeWidget;

namespace tarnwick {

class HistoryFeed;

class UserDefaults;

// The settings' alerts: the list with each alert's reading now (measured off the main thread),
// a form that sets a limit on a place, and removal. Alerts live in the user defaults, shared
// with the command line.
class AlertsPage : public QWidget {
    Q_OBJECT

public:
    // In the order of the form's kind picker.
    enum class Kind { diskUsed, size, share, growth };

    AlertsPage(std::shared_ptr<UserDefaults> defaults, HistoryFeed& history, QWidget* parent = nullptr);

    // Reads the alerts again and measures them.
    void reload();
    // Sets a limit as the form does: value in percent, or in gigabytes (decimal). False with
    // the error shown when the place can't take it.
    bool add(const QString& place, Kind kind, double value, int period = 0);
    bool removeSelected();

    [[nodiscard]] QTreeWidget* list() const { return m_list; }
    [[nodiscard]] QString error() const;
    [[nodiscard]] bool isMeasuring() const;
    [[nodiscard]] const std::vector<SpaceAlert>& alerts() const { return m_alerts; }

    // "Fuller than 90 %", "Grows by more than 5.00 GB, over the past week".
    static QString limitText(const SpaceAlert::Condition& condition);
    // "82 %", "Exceeded: 61.2 GB", or why it isn't known.
    static QString readingText(const SpaceAlert::Condition& condition, const AlertReading& reading);

Q_SIGNALS:
    void readingsShown();
    void alertsChanged();

private:
    void showAlerts();
    void showReadings(const std::map<std::string, AlertReading>& readings);
    void kindChosen();
    void showError(const QString& text);

    std::shared_ptr<UserDefaults> m_defaults;
    HistoryFeed& m_history;
    std::vector<SpaceAlert> m_alerts;
    std::uint64_t m_request = 0;

    QTreeWidget* m_list;
    QProgressBar* m_busy;
    QPushButton* m_remove;
    QLineEdit* m_place;
    QComboBox* m_kind;
    QDoubleSpinBox* m_value;
    QComboBox* m_period;
    QLabel* m_error;
};

}
