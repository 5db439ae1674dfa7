#pragma once

#include <QWidget>

class QCheckBox;
class QLabel;
class QProgressBar;
class QPushButton;

namespace tarnwick {

class DailyScans;

// The daily snapshot's switch with what it means, how its last pass went, and a snapshot
// taken now with its progress.
class DailyScansPage : public QWidget {
    Q_OBJECT

public:
    // Without daily scans (an app without a history) the page only explains.
    explicit DailyScansPage(DailyScans* dailyScans, QWidget* parent = nullptr);
    ~DailyScansPage() override;

    [[nodiscard]] QCheckBox* dailySwitch() const { return m_switch; }
    [[nodiscard]] QPushButton* snapshotNow() const { return m_now; }
    [[nodiscard]] QString lastPassText() const;
    [[nodiscard]] QString error() const;
    // Shows the switch, progress and last pass as they are now.
    void refresh();

Q_SIGNALS:
    void switched();

private:
    void turn(bool on);

    DailyScans* m_dailyScans;
    std::uint64_t m_observer = 0;
    QCheckBox* m_switch;
    QLabel* m_lastPass;
    QProgressBar* m_progress;
    QLabel* m_progressText;
    QPushButton* m_now;
    QLabel* m_error;
};

}
