#pragma once

#include "Classification/ColorMap.hpp"
#include "Geometry/VolumeCapacity.hpp"
#include "Scanning/NodeID.hpp"

#include <QColor>
#include <QString>
#include <QWidget>

#include <cstdint>
#include <optional>
#include <vector>

namespace tarnwick {

class OwnerMap;
class ScanTree;

// What the legend under the map says for the open folder in one colour mode.
struct LegendContent {
    struct Item {
        QColor color;
        QString label;
        std::int64_t bytes = 0;
        QString share; // "23 %", of the open folder (or of the disk, for the disk's own parts)
    };

    // The groups of the open folder, largest first; then the disk's free and unaccounted space.
    std::vector<Item> items;
    // Swatches without numbers: mixed folders, smaller items.
    std::vector<Item> keys;
    // For shares and ratios: the gradient from low to high with the words at its ends.
    bool gradient = false;
    QString scaleTitle;
    QColor low;
    QColor high;
    std::optional<QColor> middle; // a diverging scale's neutral point
    QString lowText;
    QString middleText;
    QString highText;
    // One line about the open folder as a whole, in the share and ratio modes.
    QString summary;
    // How to read the colours.
    QString note;

    // Reads per-folder totals, which for small folders means a walk of their subtree: run it
    // off the main thread.
    static LegendContent make(const ColorMap& colors, const ScanTree& tree, NodeID root, const OwnerMap* owners,
        std::optional<VolumeCapacity> capacity);
    // The legend's name for a group of a mode.
    static QString label(const ColorGroup& group, ColorMode mode, const OwnerMap* owners);
};

// The legend: a swatch, a name and a share for every group, flowing over as many lines as
// the width needs.
class MapLegend : public QWidget {
    Q_OBJECT

public:
    explicit MapLegend(QWidget* parent = nullptr);

    void setContent(LegendContent content);
    void clear();
    [[nodiscard]] const LegendContent& content() const { return m_content; }

    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    // Lays the legend out for a width; paints too when painter is given. Returns the height.
    int arrange(int width, QPainter* painter) const;
    int arrangeScale(int y, int width, QPainter* painter) const;

    LegendContent m_content;
};

}
