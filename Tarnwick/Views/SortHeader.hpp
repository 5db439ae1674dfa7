#pragma once

#include <QHeaderView>
#include <QStyleOptionHeader>

namespace tarnwick {

// A table header whose sort arrow points the way the values run: down when the largest come
// first. Qt's own header draws the opposite arrow for each order.
class SortHeader : public QHeaderView {
    Q_OBJECT

public:
    explicit SortHeader(QWidget* parent = nullptr);

    // The arrow a section shows for the current sort.
    [[nodiscard]] QStyleOptionHeader::SortIndicator indicator(int logicalIndex) const;

protected:
    void initStyleOptionForIndex(QStyleOptionHeader* option, int logicalIndex) const override;
};

}
