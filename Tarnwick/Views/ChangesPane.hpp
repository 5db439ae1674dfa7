#pragma once

#include "History/HistoryChanges.hpp"
#include "History/HistoryPeriod.hpp"
#include "History/PeriodChanges.hpp"
#include "Scanning/NodeID.hpp"
#include "SunburstView.hpp"

#include <QWidget>

#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QComboBox;
class QLabel;
class QListWidget;
class QProgressBar;
class QTimer;

namespace tarnwick {

class HistoryFeed;
class ScanTree;

// What grew and shrank: the current scan compared with the day snapshot at the start of the
// chosen period, for the open folder, with the period picker and its rule. The snapshots are
// read and compared off the main thread; until the scan's own snapshot is in the history the
// pane waits for it. The changes of every place go to the map through changesShown.
class ChangesPane : public QWidget {
    Q_OBJECT

public:
    enum class RowKind { section, place, rest, more };

    struct Row {
        RowKind kind = RowKind::place;
        QString name;
        QString path; // absolute, for places
        std::int64_t change = 0;
        bool isUncertain = false;
    };

    explicit ChangesPane(HistoryFeed& history, QWidget* parent = nullptr);
    ~ChangesPane() override;

    // The scan to compare, its open folder, when it finished, and whether the history keeps
    // it (a scan that stopped before the end is not saved).
    void showScan(std::shared_ptr<const ScanTree> tree, NodeID open, Date finishedAt, bool saved);
    void clear();

    [[nodiscard]] HistoryPeriod period() const { return m_period; }
    void setPeriod(HistoryPeriod period);
    // Compares with a day the user picked among the place's saved days instead of a period's
    // start; choosing a period again leaves it.
    void compareSince(const HistoryEntry& day);
    [[nodiscard]] const std::optional<HistoryEntry>& since() const { return m_since; }

    // What the pane shows, for tests and the screenshots.
    [[nodiscard]] bool isLoading() const;
    [[nodiscard]] QString headline() const;
    [[nodiscard]] QString detail() const;
    [[nodiscard]] QString message() const;
    [[nodiscard]] QString notes() const;
    [[nodiscard]] const std::vector<Row>& rows() const { return m_rows; }
    [[nodiscard]] QComboBox* periodPicker() const { return m_picker; }
    [[nodiscard]] QListWidget* list() const { return m_list; }

Q_SIGNALS:
    // Null when there is nothing to draw; since ends the map's tooltips ("since Jun 7").
    void changesShown(std::shared_ptr<const tarnwick::SunburstView::ChangeMap> changes, const QString& since);
    // A changed folder the user clicked.
    void placeChosen(const QString& path);
    void loaded();

private:
    struct Loaded;

    void reload();
    void retry();
    void giveUpWaiting();
    void loadedComparison(Loaded loaded);
    void compareOpenFolder();
    void showComparison(const std::expected<HistoryQueries::Changes, HistoryQueries::ChangesError>& changes);
    void showMessage(const QString& text, bool busy);
    void setBusy(bool busy);
    void fillRows(const HistoryQueries::Changes& changes);

    HistoryFeed& m_history;
    HistoryPeriod m_period = HistoryPeriod::defaultPeriod;
    std::optional<HistoryEntry> m_since;

    std::shared_ptr<const ScanTree> m_tree;
    NodeID m_open;
    Date m_finishedAt {};
    bool m_saved = false;
    std::shared_ptr<const PeriodChanges> m_comparison;
    std::uint64_t m_request = 0;
    bool m_waitingForSave = false;
    bool m_savedSinceLoad = false; // a save came while a comparison was being loaded
    std::vector<Row> m_rows;

    QComboBox* m_picker;
    QLabel* m_rule;
    QProgressBar* m_busy;
    QLabel* m_headline;
    QLabel* m_detail;
    QWidget* m_key;
    QListWidget* m_list;
    QLabel* m_notes;
    QLabel* m_message;
    QTimer* m_giveUp; // ends the wait for a save that never comes
};

}
