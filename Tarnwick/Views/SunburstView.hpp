#pragma once

#include "Classification/ColorMap.hpp"
#include "Geometry/ChangeProjection.hpp"
#include "Geometry/SunburstGeometry.hpp"
#include "Geometry/SunburstLabels.hpp"
#include "Geometry/SunburstLayout.hpp"
#include "Geometry/VolumeCapacity.hpp"
#include "MapPicture.hpp"
#include "SunburstPainter.hpp"
#include "Scanning/ScanProgress.hpp"

#include <QImage>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QTimer;

namespace tarnwick {

class ScanBanner;

// The ring map: the open folder in the centre, its children in the first ring, theirs in
// the next. It lays out only the sectors it draws and keeps that layout until the tree, the
// open folder or the size changes; hovering and selecting repaint from a cached picture.
class SunburstView : public QWidget {
    Q_OBJECT

public:
    // The colours of a tree shown while a scan runs; null until they are made.
    using ColorSource = std::function<std::shared_ptr<const ColorMap>(const std::shared_ptr<const ScanTree>&)>;

    static constexpr int maxRings = 8;
    static constexpr double minimumRingWidth = 18;
    // A shallow tree gets wider rings, up to this, rather than a small map.
    static constexpr double maximumRingWidth = 64;
    static constexpr double inset = 14;
    // Room kept on each side of the rings for the names that don't fit inside, at most this
    // share of the width.
    static constexpr double labelMargin = 120;
    static constexpr double labelMarginShare = 0.16;
    static constexpr int spanDivisor = 1500;
    static constexpr int pollMilliseconds = 200;

    explicit SunburstView(QWidget* parent = nullptr);
    ~SunburstView() override;

    void showTree(std::shared_ptr<const ScanTree> tree, NodeID root, std::optional<VolumeCapacity> capacity);
    // Null draws the map in neutral tones until the colours are made.
    void setColors(std::shared_ptr<const ColorMap> colors);
    void setSelection(std::optional<NodeID> node);
    void clear();

    // Growth and shrinkage since the start of a period, drawn at the clockwise end of each
    // changed sector over a paler map; null shows the map alone. since ends the tooltips'
    // change lines ("since Jun 7").
    using ChangeMap = MapPicture::ChangeMap;
    void setChanges(std::shared_ptr<const ChangeMap> changes, const QString& since);
    [[nodiscard]] const std::shared_ptr<const ChangeMap>& changes() const { return m_changes; }
    // The pieces drawn for the current layout; absent without changes.
    const std::optional<ChangeProjection>& changeProjection();

    // Shows a running scan: every pollMilliseconds the latest preview, once its colours are
    // made, and the count and path in the banner. A rescan keeps the map it replaces on show
    // until the first preview, instead of an empty view.
    enum class Start { empty, keepShown };
    void watchScan(std::shared_ptr<ScanProgress> progress, const QString& rootName, std::optional<VolumeCapacity> capacity,
        ColorSource colors, Start start = Start::empty);
    void endScanWatch();
    // Asks the running scan's colours again for the tree on show, after the colour mode changed
    // or colours were made, so the map need not wait for the next preview.
    void recolor();
    [[nodiscard]] bool isWatchingScan() const { return m_progress != nullptr; }
    // Whether the picture on show is older than what the map shows now, while a newer one is
    // drawn off the main thread (a scan's previews and the tree that ends it).
    [[nodiscard]] bool isDrawing() const { return m_drawing || m_drawSoon; }

    [[nodiscard]] const std::shared_ptr<const ScanTree>& tree() const { return m_tree; }
    [[nodiscard]] NodeID root() const { return m_root; }
    [[nodiscard]] const std::shared_ptr<const ColorMap>& colors() const { return m_colors; }
    [[nodiscard]] std::optional<NodeID> selection() const { return m_selection; }
    // The layout for the current size, made when anything it depends on changed.
    const SunburstLayout& currentLayout();
    // The rings' place in the view, for the current layout.
    SunburstGeometry currentGeometry();
    // How many layouts were made so far; repainting must not add to it.
    [[nodiscard]] int layoutsMade() const { return m_layoutsMade; }
    std::optional<SunburstSector> sectorAt(QPointF point);
    // Where the sectors' names go in the current layout.
    SunburstLabels placeLabels();
    // The colour a sector's name is written in: one that reads on the sector as drawn.
    [[nodiscard]] QColor labelColor(const SunburstSector& sector) const;
    // What the tooltip says about a sector: its name, size and share of the open folder.
    [[nodiscard]] QString describe(const SunburstSector& sector) const;
    [[nodiscard]] ScanBanner* scanBanner() const { return m_banner; }
    // What the centre says now, and where.
    SunburstPainter::CenterText centerText();

Q_SIGNALS:
    void folderOpened(tarnwick::NodeID folder);
    void nodeSelected(std::optional<tarnwick::NodeID> node);
    void upRequested();
    void stopRequested();
    // A new preview of the running scan is on the map.
    void previewShown();
    // A right click on an item's sector, at a point of the screen.
    void itemMenuRequested(tarnwick::NodeID node, const QPoint& at);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent* event) override;
    bool event(QEvent* event) override;

private:
    // The title of a piece of the disk that is no item of the tree (free, reserved, unfound).
    static std::optional<QString> capacityTitle(const SunburstSector& sector);
    struct LayoutKey {
        const ScanTree* tree = nullptr;
        NodeID root;
        std::optional<VolumeCapacity> capacity;
        SunburstGeometry geometry;
        bool operator==(const LayoutKey&) const = default;
    };

    void pollScan();
    void openSmallObjects(const SunburstSector::SmallObjects& rest);
    // The item an arrow key moves the selection to.
    std::optional<NodeID> neighbour(int key);
    void invalidatePicture();
    // The picture no longer matches; the next paint or drawing off the main thread makes it.
    void stalePicture();
    void renderPicture();
    // What the picture is drawn from, for the current layout.
    MapPicture::Scene scene();
    // Whether the next picture is drawn off the main thread: one of a running scan's, or the
    // one that replaces it, both of a tree large enough that drawing it would stall the window.
    [[nodiscard]] bool drawsOffThread() const;
    [[nodiscard]] std::pair<QString, QString> centerTexts() const;
    [[nodiscard]] std::optional<SunburstSector> sectorOf(NodeID node);
    void placeBanner();
    SunburstLayout layOut(const SunburstGeometry& geometry);
    // The rings' place with up to rings rings, leaving room for names at the sides.
    [[nodiscard]] SunburstGeometry fitRings(int rings, double ringsInset) const;

    std::shared_ptr<const ScanTree> m_tree;
    NodeID m_root;
    std::optional<VolumeCapacity> m_capacity;
    std::shared_ptr<const ColorMap> m_colors;
    std::optional<NodeID> m_selection;
    std::optional<SunburstSector> m_hover;

    SunburstLayout m_layout;
    SunburstGeometry m_geometry;
    std::optional<LayoutKey> m_layoutKey;
    int m_layoutsMade = 0;
    QImage m_picture;
    // Counts the changes of what the picture shows, so a picture drawn off the main thread
    // knows whether it is still the latest.
    std::uint64_t m_sceneVersion = 0;
    bool m_drawing = false;
    bool m_drawSoon = false;
    bool m_pictureOfScan = false;
    std::shared_ptr<const ChangeMap> m_changes;
    QString m_changesSince;
    std::optional<ChangeProjection> m_projection;
    const void* m_projectionChanges = nullptr; // the changes the projection was made for, with m_projectionKey
    std::optional<LayoutKey> m_projectionKey;
    bool m_pictureValid = false;

    std::shared_ptr<ScanProgress> m_progress;
    QString m_scanRootName;
    std::optional<VolumeCapacity> m_scanCapacity;
    ColorSource m_colorSource;
    std::uint64_t m_shownPreview = 0;
    QTimer* m_poll;
    ScanBanner* m_banner;
};

}
