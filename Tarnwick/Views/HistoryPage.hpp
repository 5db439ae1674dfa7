#pragma once

#include <QWidget>

#include <cstdint>
#include <string>

class QLabel;
class QMessageBox;
class QProgressBar;
class QPushButton;

namespace tarnwick {

class HistoryFeed;

// The settings' history: what a day of history takes, what the history takes in all, where
// it is kept, and "Clear History…" with its confirmation. Figures are read and the history
// cleared off the main thread.
class HistoryPage : public QWidget {
    Q_OBJECT

public:
    explicit HistoryPage(HistoryFeed& history, QWidget* parent = nullptr);

    void reload();
    // Opens the confirmation as a sheet of the window; clearing starts when it is accepted.
    void askToClear();

    [[nodiscard]] QString dayOfHistoryText() const;
    [[nodiscard]] QMessageBox* confirmation() const { return m_confirmation; }
    [[nodiscard]] bool isBusy() const;
    [[nodiscard]] std::int64_t storedBytes() const { return m_storedBytes; }

Q_SIGNALS:
    void figuresShown();
    void cleared();

private:
    void clear();

    HistoryFeed& m_history;
    std::int64_t m_storedBytes = 0;
    QLabel* m_dayOfHistory;
    QLabel* m_stored;
    QProgressBar* m_busy;
    QPushButton* m_clear;
    QMessageBox* m_confirmation = nullptr;
};

}
