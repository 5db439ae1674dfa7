#pragma once

#include "History/HistorySource.hpp"

#include <QDialog>

#include <string>

class QLabel;
class QProgressBar;

namespace tarnwick {

class HistoryFeed;

class FreeSpaceChart;

// A disk's free space over the past 30 days, read from the record of the volume's space off
// the main thread.
class FreeSpaceDialog : public QDialog {
    Q_OBJECT

public:
    FreeSpaceDialog(const QString& diskName, HistorySource disk, HistoryFeed& history, QWidget* parent = nullptr);

    [[nodiscard]] FreeSpaceChart* chart() const { return m_chart; }
    [[nodiscard]] bool isLoading() const;
    // The disk's free space now, the same figure as the sidebar's.
    [[nodiscard]] QString summaryText() const;

Q_SIGNALS:
    void loaded();

private:
    void load();

    HistorySource m_disk;
    HistoryFeed& m_history;
    QLabel* m_summary;
    QProgressBar* m_busy;
    FreeSpaceChart* m_chart;
};

}
