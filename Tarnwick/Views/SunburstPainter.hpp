#pragma once

#include "Geometry/SunburstGeometry.hpp"
#include "Geometry/SunburstLabels.hpp"
#include "Geometry/SunburstLayout.hpp"

#include <QColor>
#include <QFont>
#include <QPainterPath>
#include <QRectF>
#include <QString>

#include <functional>

class QPainter;

namespace tarnwick {

// Draws a laid-out ring map with QPainter: the sectors, their names, outlines over them and
// the centre disc. Knows nothing of trees or colours beyond what it is handed.
namespace SunburstPainter {

using Fill = std::function<QColor(const SunburstSector&)>;
using Name = std::function<QString(NodeID)>;

// The outline of a sector: a piece of the ring between two fractions of a turn.
QPainterPath sectorPath(const SunburstGeometry& geometry, int ring, double start, double end);
// The point at a radius and a fraction of a turn clockwise from twelve o'clock.
QPointF pointAt(const SunburstGeometry& geometry, double radius, double fraction);

void drawSectors(QPainter& painter, const SunburstLayout& layout, const SunburstGeometry& geometry, const Fill& fill);
// The font of the sectors' names.
QFont labelFont(const QFont& font);
// Names placed by SunburstLabels: inside sectors in a colour that reads on the sector's
// (colour gives it for a node), beside the map with their leader lines.
using TextColor = std::function<QColor(NodeID)>;
void drawLabels(QPainter& painter, const SunburstLabels& labels, const QFont& font, const TextColor& color, const Name& name);
void drawOutline(QPainter& painter, const SunburstGeometry& geometry, const SunburstSector& sector, const QColor& color, double width);
// Where the centre's title and detail go, in which fonts, and the boxes their text covers.
struct CenterText {
    double radius = 0; // of the disc
    QFont titleFont;
    QFont detailFont;
    QString title; // shortened in the middle when even two lines cannot hold it
    QString detail;
    QRectF titleArea;
    QRectF detailArea;
    QRectF titleBox;
    QRectF detailBox;
};
CenterText centerText(const SunburstGeometry& geometry, const QFont& font, const QString& title, const QString& detail);
// The centre disc with a title over a larger detail line.
void drawCenter(QPainter& painter, const SunburstGeometry& geometry, const QFont& font, const QString& title, const QString& detail);

}

}
