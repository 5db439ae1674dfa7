#include "ListPane.hpp"

#include "CellTipDelegate.hpp"
#include "FolderListModel.hpp"
#include "SortHeader.hpp"
#include "Scanning/ScanTree.hpp"

#include <QHeaderView>
#include <QPainter>
#include <QSortFilterProxyModel>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QVBoxLayout>

namespace tarnwick {

namespace {

constexpr int sizeWidth = 84;
constexpr int shareWidth = 104;
constexpr int kindWidth = 96;
constexpr int statusWidth = 110;
constexpr int minimumNameWidth = 150;
constexpr int swatchWidth = 22;

// Keeps the rest row last whichever way the table is sorted.
class RestLastProxy : public QSortFilterProxyModel {
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

protected:
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override
    {
        bool leftRest = left.data(FolderListModel::nodeRole).toInt() < 0;
        bool rightRest = right.data(FolderListModel::nodeRole).toInt() < 0;
        if (leftRest || rightRest) {
            bool descending = sortOrder() == Qt::DescendingOrder;
            return descending ? leftRest && !rightRest : rightRest && !leftRest;
        }
        return QSortFilterProxyModel::lessThan(left, right);
    }
};

// The share column: a bar in the item's colour, with the number beside it.
class ShareDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyleOptionViewItem plain = option;
        initStyleOption(&plain, index);
        plain.text.clear();
        option.widget->style()->drawControl(QStyle::CE_ItemViewItem, &plain, painter, option.widget);
        double share = std::clamp(index.data(FolderListModel::shareRole).toDouble(), 0.0, 1.0);
        QColor color = index.data(FolderListModel::colorRole).value<QColor>();
        QRect area = option.rect.adjusted(8, 0, -8, 0);
        int textWidth = option.fontMetrics.horizontalAdvance(QStringLiteral("100 %")) + 6;
        QRectF track(area.left(), area.center().y() - 3, std::max(area.width() - textWidth, 10), 6);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(QColor(0xE8, 0xEC, 0xF1));
        painter->drawRoundedRect(track, 3, 3);
        QRectF bar = track;
        bar.setWidth(std::max(track.width() * share, share > 0 ? 3.0 : 0.0));
        painter->setBrush(color);
        painter->drawRoundedRect(bar, 3, 3);
        painter->setPen(option.state & QStyle::State_Selected ? option.palette.highlightedText().color() : QColor(0x4B, 0x55, 0x63));
        painter->drawText(QRect(area.right() - textWidth, option.rect.top(), textWidth, option.rect.height()), Qt::AlignRight | Qt::AlignVCenter,
            index.data(Qt::DisplayRole).toString());
        painter->restore();
    }
};

// The name column: a rounded swatch of the item's colour before the name.
class NameDelegate : public CellTipDelegate {
public:
    explicit NameDelegate(QObject* parent)
        : CellTipDelegate(parent, swatchWidth)
    {
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyleOptionViewItem shifted = option;
        initStyleOption(&shifted, index);
        shifted.icon = QIcon();
        shifted.features &= ~QStyleOptionViewItem::HasDecoration;
        shifted.rect.adjust(swatchWidth, 0, 0, 0);
        QStyleOptionViewItem background = option;
        background.text.clear();
        background.icon = QIcon();
        background.features &= ~QStyleOptionViewItem::HasDecoration;
        option.widget->style()->drawControl(QStyle::CE_ItemViewItem, &background, painter, option.widget);
        option.widget->style()->drawControl(QStyle::CE_ItemViewItem, &shifted, painter, option.widget);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(index.data(FolderListModel::colorRole).value<QColor>());
        painter->drawRoundedRect(QRectF(option.rect.left() + 8, option.rect.center().y() - 5, 10, 10), 3, 3);
        painter->restore();
    }
};

}

ListPane::ListPane(QWidget* parent)
    : QWidget(parent)
    , m_model(new FolderListModel(this))
    , m_sorted(new RestLastProxy(this))
    , m_table(new QTableView(this))
{
    m_sorted->setSourceModel(m_model);
    m_sorted->setSortRole(FolderListModel::sortRole);
    m_sorted->setSortCaseSensitivity(Qt::CaseInsensitive);
    m_table->setObjectName("folderList");
    m_table->setHorizontalHeader(new SortHeader(m_table));
    m_table->setModel(m_sorted);
    m_table->setSortingEnabled(true);
    m_table->sortByColumn(FolderListModel::size, Qt::DescendingOrder);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setShowGrid(false);
    m_table->setAlternatingRowColors(false);
    m_table->setWordWrap(false);
    m_table->setTextElideMode(Qt::ElideMiddle);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(26);
    m_table->horizontalHeader()->setHighlightSections(false);
    m_table->horizontalHeader()->setStretchLastSection(false);
    m_table->horizontalHeader()->setSectionResizeMode(FolderListModel::name, QHeaderView::Stretch);
    m_table->horizontalHeader()->setSectionResizeMode(FolderListModel::size, QHeaderView::Fixed);
    m_table->horizontalHeader()->setSectionResizeMode(FolderListModel::share, QHeaderView::Fixed);
    m_table->horizontalHeader()->setSectionResizeMode(FolderListModel::kind, QHeaderView::Interactive);
    m_table->horizontalHeader()->setSectionResizeMode(FolderListModel::status, QHeaderView::Interactive);
    m_table->setColumnWidth(FolderListModel::size, sizeWidth);
    m_table->setColumnWidth(FolderListModel::share, shareWidth);
    m_table->setColumnWidth(FolderListModel::kind, kindWidth);
    m_table->setColumnWidth(FolderListModel::status, statusWidth);
    m_table->setItemDelegate(new CellTipDelegate(m_table));
    m_table->setItemDelegateForColumn(FolderListModel::name, new NameDelegate(m_table));
    m_table->setItemDelegateForColumn(FolderListModel::share, new ShareDelegate(m_table));
    m_table->setFrameShape(QFrame::NoFrame);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_table);

    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this, &ListPane::selectionChanged);
    connect(m_table, &QTableView::activated, this, &ListPane::activated);
    connect(m_table, &QTableView::doubleClicked, this, &ListPane::activated);
    m_table->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_table, &QWidget::customContextMenuRequested, this, [this](const QPoint& at) {
        QModelIndex index = m_table->indexAt(at);
        int node = index.isValid() ? index.data(FolderListModel::nodeRole).toInt() : -1;
        if (node >= 0 && m_interactive)
            Q_EMIT itemMenuRequested(NodeID { node }, m_table->viewport()->mapToGlobal(at));
    });
}

void ListPane::showFolder(std::shared_ptr<const ScanTree> tree, NodeID folder)
{
    if (tree == m_model->tree() && folder == m_folder)
        return;
    m_applying = true;
    m_folder = folder;
    m_model->setFolder(std::move(tree), folder);
    m_applying = false;
    fitColumns();
}

void ListPane::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    fitColumns();
}

void ListPane::fitColumns()
{
    bool anyStatus = false;
    for (int row = 0; row < m_model->rowCount() && !anyStatus; ++row)
        anyStatus = !m_model->index(row, FolderListModel::status).data().toString().isEmpty();
    int width = m_table->viewport()->width();
    int others = sizeWidth + shareWidth;
    bool showKind = width - others - kindWidth >= minimumNameWidth;
    others += showKind ? kindWidth : 0;
    bool showStatus = anyStatus && width - others - statusWidth >= minimumNameWidth;
    m_table->setColumnHidden(FolderListModel::kind, !showKind);
    m_table->setColumnHidden(FolderListModel::status, !showStatus);
}

void ListPane::setColors(std::shared_ptr<const ColorMap> colors)
{
    m_model->setColors(std::move(colors));
}

void ListPane::clear()
{
    showFolder(nullptr, NodeID::root());
}

void ListPane::setInteractive(bool interactive)
{
    if (interactive == m_interactive)
        return;
    m_interactive = interactive;
    m_table->clearSelection();
    m_table->setSelectionMode(interactive ? QAbstractItemView::SingleSelection : QAbstractItemView::NoSelection);
}

std::optional<int> ListPane::visualRow(NodeID node) const
{
    std::optional<int> row = m_model->rowOf(node);
    if (!row)
        return std::nullopt;
    QModelIndex sorted = m_sorted->mapFromSource(m_model->index(*row, 0));
    return sorted.isValid() ? std::optional(sorted.row()) : std::nullopt;
}

void ListPane::setSelection(std::optional<NodeID> node)
{
    if (node == selectedNode())
        return;
    m_applying = true;
    std::optional<int> row = node ? visualRow(*node) : std::nullopt;
    if (row) {
        m_table->selectRow(*row);
        m_table->scrollTo(m_sorted->index(*row, 0));
    } else {
        m_table->clearSelection();
    }
    m_applying = false;
}

std::optional<NodeID> ListPane::selectedNode() const
{
    QModelIndexList rows = m_table->selectionModel()->selectedRows();
    if (rows.isEmpty())
        return std::nullopt;
    int value = rows.first().data(FolderListModel::nodeRole).toInt();
    if (value < 0)
        return std::nullopt;
    return NodeID { value };
}

void ListPane::selectionChanged()
{
    if (!m_applying)
        Q_EMIT nodeSelected(selectedNode());
}

void ListPane::activated(const QModelIndex& index)
{
    int value = index.data(FolderListModel::nodeRole).toInt();
    const auto& tree = m_model->tree();
    if (value < 0 || !tree || !m_interactive)
        return;
    NodeID node { value };
    if (isContainer(tree->kind(node)))
        Q_EMIT folderOpened(node);
}

}
