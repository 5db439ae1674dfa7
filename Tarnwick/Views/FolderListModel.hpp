#pragma once

#include "Classification/ColorMap.hpp"
#include "TreeQueries/FolderSummary.hpp"

#include <QAbstractTableModel>
#include <QColor>

#include <memory>
#include <optional>

namespace tarnwick {

class ScanTree;

// The rows of the list: the open folder's summary, its largest children first, and one
// row for the rest.
class FolderListModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { name, size, share, kind, status, columns };
    enum Role {
        nodeRole = Qt::UserRole + 1, // the NodeID's value; -1 on the rest row
        sortRole,
        shareRole,
        colorRole,
    };
    // The largest number of children listed one by one; the rest make one row.
    static constexpr int limit = 2000;

    explicit FolderListModel(QObject* parent = nullptr);

    void setFolder(std::shared_ptr<const ScanTree> tree, NodeID folder);
    void setColors(std::shared_ptr<const ColorMap> colors);
    [[nodiscard]] const FolderSummary& summary() const { return m_summary; }
    [[nodiscard]] const std::shared_ptr<const ScanTree>& tree() const { return m_tree; }
    [[nodiscard]] std::optional<int> rowOf(NodeID node) const;
    [[nodiscard]] bool isRestRow(int row) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    [[nodiscard]] QVariant entryData(const FolderSummary::Entry& entry, int column, int role) const;
    [[nodiscard]] QVariant restData(int column, int role) const;
    [[nodiscard]] QColor colorOf(NodeID node) const;

    std::shared_ptr<const ScanTree> m_tree;
    std::shared_ptr<const ColorMap> m_colors;
    FolderSummary m_summary;
};

}
