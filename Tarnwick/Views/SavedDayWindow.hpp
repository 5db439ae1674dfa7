#pragma once

#include "History/HistoryEntry.hpp"
#include "Scanning/NodeID.hpp"

#include <QWidget>

#include <memory>
#include <optional>
#include <string>

class QLabel;
class QPushButton;

namespace tarnwick {

class Breadcrumb;
class HistoryStore;
class ListPane;
class ScanTree;
class SunburstView;

// One day of a place's history on the map, in a window of its own marked as a past day: the
// folders the day's snapshot keeps (10 MB and more), each folder's rest as one piece, and the
// list of the open folder. The snapshot is read with the history's one loader, off the main
// thread. Its navigation is its own: the app's scan and open folder stay as they are.
class SavedDayWindow : public QWidget {
    Q_OBJECT

public:
    // The day snapshot entryID of the place at path, from the app's history, which outlives
    // the window.
    SavedDayWindow(HistoryStore& history, std::string path, std::int64_t entryID, QWidget* parent = nullptr);
    ~SavedDayWindow() override;

    [[nodiscard]] bool isLoading() const { return m_loading; }
    [[nodiscard]] const std::shared_ptr<const ScanTree>& tree() const { return m_tree; }
    [[nodiscard]] const std::optional<HistoryEntry>& entry() const { return m_entry; }
    [[nodiscard]] NodeID openFolder() const { return m_open; }
    [[nodiscard]] SunburstView* map() const { return m_map; }
    [[nodiscard]] ListPane* list() const { return m_list; }
    [[nodiscard]] QString headline() const;
    [[nodiscard]] QPushButton* compareButton() const { return m_compare; }

    void open(NodeID folder);

Q_SIGNALS:
    // Compare the place as it is now with this day: path and the day's entry.
    void compareRequested(const QString& path, const tarnwick::HistoryEntry& day);

private:
    struct Loaded;
    void loaded(Loaded result);
    void select(std::optional<NodeID> node);

    std::string m_path;
    bool m_loading = true;
    std::shared_ptr<const ScanTree> m_tree;
    std::optional<HistoryEntry> m_entry;
    NodeID m_open;

    QLabel* m_title;
    QLabel* m_detail;
    QPushButton* m_compare;
    Breadcrumb* m_breadcrumb;
    SunburstView* m_map;
    ListPane* m_list;
};

}
