#include "CellTipDelegate.hpp"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QToolTip>

namespace tarnwick {

namespace {

// The style's padding on either side of a cell's text, and the table's own, with a little to spare.
constexpr int textPadding = 2 * 4 + 2 * 4;

}

CellTipDelegate::CellTipDelegate(QObject* parent, int inset)
    : QStyledItemDelegate(parent)
    , m_inset(inset)
{
}

bool CellTipDelegate::isCut(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QString text = index.data(Qt::DisplayRole).toString();
    if (text.isEmpty())
        return false;
    return option.fontMetrics.horizontalAdvance(text) + textPadding + m_inset > option.rect.width();
}

bool CellTipDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option, const QModelIndex& index)
{
    if (event->type() != QEvent::ToolTip || !index.isValid())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    QString explicitTip = index.data(Qt::ToolTipRole).toString();
    if (!explicitTip.isEmpty())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    if (isCut(option, index))
        QToolTip::showText(event->globalPos(), index.data(Qt::DisplayRole).toString(), view);
    else
        QToolTip::hideText();
    return true;
}

}
