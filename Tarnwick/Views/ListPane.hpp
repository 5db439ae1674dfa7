#pragma once

#include "Classification/ColorMap.hpp"
#include "Scanning/NodeID.hpp"

#include <QWidget>

#include <memory>
#include <optional>

class QSortFilterProxyModel;
class QTableView;

namespace tarnwick {

class FolderListModel;
class ScanTree;

// The open folder as a sortable table: name, size, share, kind and status of each child.
// Its selection and the map's are the model's one selection.
class ListPane : public QWidget {
    Q_OBJECT

public:
    explicit ListPane(QWidget* parent = nullptr);

    void showFolder(std::shared_ptr<const ScanTree> tree, NodeID folder);
    void setColors(std::shared_ptr<const ColorMap> colors);
    // Selects the node's row without reporting it back.
    void setSelection(std::optional<NodeID> node);
    void clear();
    // A preview is only looked at: its rows cannot be selected or opened.
    void setInteractive(bool interactive);

    [[nodiscard]] QTableView* table() const { return m_table; }
    [[nodiscard]] FolderListModel* model() const { return m_model; }
    [[nodiscard]] std::optional<NodeID> selectedNode() const;
    // Where the node's row is in the table as sorted now.
    [[nodiscard]] std::optional<int> visualRow(NodeID node) const;

Q_SIGNALS:
    void nodeSelected(std::optional<tarnwick::NodeID> node);
    void folderOpened(tarnwick::NodeID folder);
    // A right click on an item's row, at a point of the screen.
    void itemMenuRequested(tarnwick::NodeID node, const QPoint& at);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void selectionChanged();
    void activated(const QModelIndex& index);
    // Names come first: the other columns take what they need and are left out, the least
    // telling first, when the pane is too narrow to show a name beside them.
    void fitColumns();

    FolderListModel* m_model;
    QSortFilterProxyModel* m_sorted;
    QTableView* m_table;
    NodeID m_folder;
    bool m_applying = false;
    bool m_interactive = true;
};

}
