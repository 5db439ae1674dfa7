#pragma once

#include <QStyledItemDelegate>

namespace tarnwick {

// Cells whose text is too wide for them, and so shown shortened, give their whole text as a
// tooltip; cells shown whole give none. inset is what the cell draws before its text.
class CellTipDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    explicit CellTipDelegate(QObject* parent = nullptr, int inset = 0);

    // Whether the cell's text is shortened at this cell width.
    [[nodiscard]] bool isCut(const QStyleOptionViewItem& option, const QModelIndex& index) const;

    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option, const QModelIndex& index) override;

private:
    int m_inset;
};

}
