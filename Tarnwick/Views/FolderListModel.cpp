#include "FolderListModel.hpp"

#include "MapPalette.hpp"
#include "Scanning/NodeStatus.hpp"
#include "Scanning/ScanTree.hpp"
#include "ViewFormat.hpp"
#include "ViewTexts.hpp"

namespace tarnwick {

FolderListModel::FolderListModel(QObject* parent)
    : QAbstractTableModel(parent)
{
}

void FolderListModel::setFolder(std::shared_ptr<const ScanTree> tree, NodeID folder)
{
    beginResetModel();
    m_tree = std::move(tree);
    // Bounded by the listed rows, plus one pass over the remaining sizes for the rest row.
    m_summary = m_tree ? FolderSummary::make(*m_tree, folder, limit) : FolderSummary {};
    endResetModel();
}

void FolderListModel::setColors(std::shared_ptr<const ColorMap> colors)
{
    if (colors == m_colors)
        return;
    m_colors = std::move(colors);
    if (rowCount() > 0)
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1), { Qt::DecorationRole, colorRole });
}

std::optional<int> FolderListModel::rowOf(NodeID node) const
{
    for (std::size_t row = 0; row < m_summary.entries.size(); ++row) {
        if (m_summary.entries[row].node == node)
            return static_cast<int>(row);
    }
    return std::nullopt;
}

bool FolderListModel::isRestRow(int row) const
{
    return row == static_cast<int>(m_summary.entries.size()) && m_summary.otherCount > 0;
}

int FolderListModel::rowCount(const QModelIndex& parent) const
{
    if (parent.isValid() || !m_tree)
        return 0;
    return static_cast<int>(m_summary.entries.size()) + (m_summary.otherCount > 0 ? 1 : 0);
}

int FolderListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : Column::columns;
}

QColor FolderListModel::colorOf(NodeID node) const
{
    if (!m_colors)
        return MapPalette::uncolored(0);
    return MapPalette::color(m_colors->color(node), *m_colors);
}

QVariant FolderListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || !m_tree)
        return {};
    if (isRestRow(index.row()))
        return restData(index.column(), role);
    if (index.row() < 0 || index.row() >= static_cast<int>(m_summary.entries.size()))
        return {};
    return entryData(m_summary.entries[static_cast<std::size_t>(index.row())], index.column(), role);
}

QVariant FolderListModel::entryData(const FolderSummary::Entry& entry, int column, int role) const
{
    switch (role) {
    case nodeRole:
        return entry.node.value;
    case shareRole:
        return entry.share;
    case colorRole:
        return colorOf(entry.node);
    case Qt::DecorationRole:
        return column == Column::name ? QVariant(colorOf(entry.node)) : QVariant();
    case Qt::TextAlignmentRole:
        return column == Column::size || column == Column::share ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    case Qt::ToolTipRole:
        return column == Column::name ? QVariant(QString::fromStdString(m_tree->path(entry.node))) : QVariant();
    case sortRole:
        switch (column) {
        case Column::name:
            return QString::fromStdString(entry.name).toLower();
        case Column::size:
        case Column::share:
            return static_cast<qlonglong>(entry.allocated);
        default:
            return entryData(entry, column, Qt::DisplayRole);
        }
    case Qt::DisplayRole:
        switch (column) {
        case Column::name:
            return QString::fromStdString(entry.name);
        case Column::size:
            return ViewFormat::size(entry.allocated, entry.incomplete);
        case Column::share:
            return ViewFormat::percent(entry.share);
        case Column::kind:
            return ViewFormat::format(*m_tree, entry.node);
        case Column::status:
            if (auto word = NodeStatus::word(*m_tree, entry.node))
                return QString::fromUtf8(word->data(), static_cast<qsizetype>(word->size()));
            return QString();
        default:
            break;
        }
        break;
    default:
        break;
    }
    return {};
}

QVariant FolderListModel::restData(int column, int role) const
{
    double share = m_summary.allocated > 0 ? static_cast<double>(m_summary.otherAllocated) / static_cast<double>(m_summary.allocated) : 0;
    switch (role) {
    case nodeRole:
        return -1;
    case shareRole:
        return share;
    case colorRole:
    case Qt::DecorationRole:
        return column == Column::name || role == colorRole ? QVariant(MapPalette::smallObjects()) : QVariant();
    case Qt::TextAlignmentRole:
        return column == Column::size || column == Column::share ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    case Qt::ForegroundRole:
        return QColor(0x6B, 0x72, 0x80);
    case Qt::DisplayRole:
        switch (column) {
        case Column::name:
            return ViewTexts::moreItems(ViewFormat::count(m_summary.otherCount));
        case Column::size:
            return ViewFormat::size(m_summary.otherAllocated);
        case Column::share:
            return ViewFormat::percent(share);
        default:
            break;
        }
        break;
    default:
        break;
    }
    return {};
}

QVariant FolderListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return section == Column::size || section == Column::share ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    if (role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Column::name:
        return ViewTexts::nameColumn;
    case Column::size:
        return ViewTexts::sizeColumn;
    case Column::share:
        return ViewTexts::shareColumn;
    case Column::kind:
        return ViewTexts::kindColumn;
    case Column::status:
        return ViewTexts::statusColumn;
    default:
        return {};
    }
}

}
