#include "MapPicture.hpp"

#include "MapPalette.hpp"
#include "Scanning/ScanTree.hpp"
#include "SunburstPainter.hpp"
#include "ViewFormat.hpp"

#include <QFontMetricsF>
#include <QPainter>

namespace tarnwick::MapPicture {

namespace {

// The map recedes behind a veil; growth is a solid piece at the clockwise end of its sector,
// shrinkage a hatched one (the part of the former size that is gone). A change only one of the
// two scans could measure in full is drawn lighter.
void drawChanges(QPainter& painter, const Scene& scene)
{
    QPainterPath whole;
    for (const SunburstLayout::Ring& ring : scene.layout.rings) {
        for (const SunburstSector& sector : ring)
            whole.addPath(SunburstPainter::sectorPath(scene.geometry, sector.ring, sector.start, sector.end));
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(MapPalette::changeVeil());
    painter.drawPath(whole);
    if (!scene.projection)
        return;
    for (const ChangeProjection::Piece& piece : scene.projection->pieces) {
        auto known = scene.changes->find(piece.node);
        bool uncertain = known != scene.changes->end() && known->second.isUncertain;
        bool grew = piece.change > 0;
        QColor color = grew ? MapPalette::growth() : MapPalette::shrinkage();
        if (uncertain)
            color.setAlphaF(0.55);
        QPainterPath path = SunburstPainter::sectorPath(scene.geometry, piece.ring, piece.start, piece.end);
        painter.setPen(QPen(MapPalette::sectorBorder(), 1.0));
        painter.setBrush(grew ? color : MapPalette::forRing(color, 3));
        painter.drawPath(path);
        if (!grew) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(QBrush(color, Qt::BDiagPattern));
            painter.drawPath(path);
        }
    }
}

}

QColor fill(const Scene& scene, const SunburstSector& sector)
{
    if (std::holds_alternative<SunburstSector::Available>(sector.content))
        return MapPalette::available();
    if (std::holds_alternative<SunburstSector::Unaccounted>(sector.content))
        return MapPalette::unaccounted();
    if (std::holds_alternative<SunburstSector::Reserved>(sector.content))
        return MapPalette::reserved();
    if (std::holds_alternative<SunburstSector::SmallObjects>(sector.content) || std::holds_alternative<SunburstSector::Rest>(sector.content))
        return MapPalette::forRing(MapPalette::smallObjects(), sector.ring);
    QColor base = scene.colors ? MapPalette::color(scene.colors->color(*sector.node()), *scene.colors) : MapPalette::uncolored(sector.branch);
    return MapPalette::forRing(base, sector.ring);
}

QColor labelColor(const Scene& scene, const SunburstSector& sector)
{
    QColor shown = fill(scene, sector);
    return MapPalette::textOn(scene.changes ? MapPalette::veiled(shown) : shown);
}

SunburstLabels placeLabels(const Scene& scene)
{
    if (!scene.tree)
        return {};
    QFontMetricsF metrics(SunburstPainter::labelFont(scene.font));
    const ScanTree& tree = *scene.tree;
    SunburstLabels::Metrics sizes;
    sizes.width = [&tree, &metrics](NodeID node) { return metrics.horizontalAdvance(ViewFormat::name(tree, node)); };
    sizes.lineHeight = metrics.height();
    sizes.shortestWidth = metrics.averageCharWidth() * 8;
    return SunburstLabels::place(scene.layout, scene.geometry, scene.size.width(), scene.size.height(), sizes);
}

QImage draw(const Scene& scene)
{
    QImage picture((QSizeF(scene.size) * scene.pixelRatio).toSize(), QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(scene.pixelRatio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    SunburstPainter::drawSectors(painter, scene.layout, scene.geometry, [&scene](const SunburstSector& sector) { return fill(scene, sector); });
    if (scene.changes)
        drawChanges(painter, scene);
    if (!scene.tree)
        return picture;
    SunburstLabels labels = placeLabels(scene);
    std::unordered_map<NodeID, QColor> colors;
    for (const SunburstLayout::Ring& ring : scene.layout.rings) {
        for (const SunburstSector& sector : ring) {
            if (sector.node())
                colors.emplace(*sector.node(), labelColor(scene, sector));
        }
    }
    const ScanTree& tree = *scene.tree;
    SunburstPainter::drawLabels(
        painter, labels, scene.font, [&colors](NodeID node) { return colors[node]; }, [&tree](NodeID node) { return ViewFormat::name(tree, node); });
    return picture;
}

}
