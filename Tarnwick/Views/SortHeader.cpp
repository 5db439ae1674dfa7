#include "SortHeader.hpp"

namespace tarnwick {

SortHeader::SortHeader(QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent)
{
    setSectionsClickable(true);
}

QStyleOptionHeader::SortIndicator SortHeader::indicator(int logicalIndex) const
{
    QStyleOptionHeader option;
    initStyleOption(&option);
    initStyleOptionForIndex(&option, logicalIndex);
    return option.sortIndicator;
}

void SortHeader::initStyleOptionForIndex(QStyleOptionHeader* option, int logicalIndex) const
{
    QHeaderView::initStyleOptionForIndex(option, logicalIndex);
    if (!isSortIndicatorShown() || sortIndicatorSection() != logicalIndex)
        return;
    option->sortIndicator = sortIndicatorOrder() == Qt::DescendingOrder ? QStyleOptionHeader::SortDown : QStyleOptionHeader::SortUp;
}

}
