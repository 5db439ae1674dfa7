#pragma once

#include "Scanning/NodeID.hpp"
#include "TreeQueries/TreeSearch.hpp"

#include <QWidget>

#include <chrono>
#include <memory>
#include <optional>

class QComboBox;
class QLabel;
class QTableWidget;

namespace tarnwick {

class ScanTree;

// Finds items anywhere below the open folder, the largest first, with the core's search that
// the find command uses: by name (a plain word matches names that contain it, a pattern with
// * ? [ is taken as it is), kind, size and how long since anything changed inside. The
// results take the list's place; choosing one shows it on the map.
class SearchPane : public QWidget {
    Q_OBJECT

public:
    static constexpr int resultLimit = 200;

    struct Query {
        QString name; // empty: any name
        NodeKindSet kinds = NodeKindSet::all();
        std::int64_t minimumSize = 0;
        std::optional<int> unchangedDays; // nothing inside changed for this many days
    };

    explicit SearchPane(QWidget* parent = nullptr);

    // Runs the typed name with the filters as they are set, below folder. The results stay
    // while the map moves to one of them, until the next search.
    void search(std::shared_ptr<const ScanTree> tree, NodeID folder, const QString& name);
    void clear();
    [[nodiscard]] const std::shared_ptr<const ScanTree>& tree() const { return m_tree; }

    // The filters as set in the pane, with the given name.
    [[nodiscard]] Query query(const QString& name) const;
    // The search itself; absent for a name pattern that is not valid.
    [[nodiscard]] static std::optional<TreeSearch::Found> run(const ScanTree& tree, NodeID below, const Query& query,
        std::chrono::system_clock::time_point now);

    [[nodiscard]] const std::optional<TreeSearch::Found>& found() const { return m_found; }
    [[nodiscard]] QString summary() const;
    [[nodiscard]] QComboBox* kindPicker() const { return m_kind; }
    [[nodiscard]] QComboBox* sizePicker() const { return m_size; }
    [[nodiscard]] QComboBox* agePicker() const { return m_age; }
    [[nodiscard]] QTableWidget* results() const { return m_results; }

Q_SIGNALS:
    void itemChosen(tarnwick::NodeID node);
    void closeRequested();

private:
    void rerun();
    void fill();

    std::shared_ptr<const ScanTree> m_tree;
    NodeID m_folder;
    QString m_name;
    std::optional<TreeSearch::Found> m_found;
    QLabel* m_summary;
    QComboBox* m_kind;
    QComboBox* m_size;
    QComboBox* m_age;
    QTableWidget* m_results;
};

}
