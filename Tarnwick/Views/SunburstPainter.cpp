#include "SunburstPainter.hpp"

#include "MapPalette.hpp"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tarnwick::SunburstPainter {

namespace {

constexpr int titleFlags = Qt::AlignHCenter | Qt::AlignBottom | Qt::TextWordWrap;

double degrees(double fraction)
{
    // Fractions run clockwise from twelve o'clock; Qt's angles anticlockwise from three.
    return 90.0 - fraction * 360.0;
}

}

QPainterPath sectorPath(const SunburstGeometry& geometry, int ring, double start, double end)
{
    QPointF center(geometry.center.x, geometry.center.y);
    double inner = geometry.centerRadius + ring * geometry.ringWidth;
    double outer = inner + geometry.ringWidth;
    QRectF outerRect(center.x() - outer, center.y() - outer, 2 * outer, 2 * outer);
    QRectF innerRect(center.x() - inner, center.y() - inner, 2 * inner, 2 * inner);
    double from = degrees(start);
    double sweep = -(end - start) * 360.0;
    QPainterPath path;
    path.arcMoveTo(outerRect, from);
    path.arcTo(outerRect, from, sweep);
    path.arcTo(innerRect, from + sweep, -sweep);
    path.closeSubpath();
    return path;
}

QPointF pointAt(const SunburstGeometry& geometry, double radius, double fraction)
{
    double angle = fraction * 2 * std::numbers::pi;
    return QPointF(geometry.center.x + radius * std::sin(angle), geometry.center.y - radius * std::cos(angle));
}

void drawSectors(QPainter& painter, const SunburstLayout& layout, const SunburstGeometry& geometry, const Fill& fill)
{
    QPen border(MapPalette::sectorBorder(), 1.0);
    border.setJoinStyle(Qt::RoundJoin);
    for (const SunburstLayout::Ring& ring : layout.rings) {
        for (const SunburstSector& sector : ring) {
            QPainterPath path = sectorPath(geometry, sector.ring, sector.start, sector.end);
            painter.setPen(border);
            painter.setBrush(fill(sector));
            painter.drawPath(path);
            // Texture tells the parts that are not one item: the space the scan didn't find,
            // and many items too small to draw.
            if (std::holds_alternative<SunburstSector::Unaccounted>(sector.content)) {
                painter.setPen(Qt::NoPen);
                painter.setBrush(QBrush(QColor(255, 255, 255, 110), Qt::BDiagPattern));
                painter.drawPath(path);
            } else if (std::holds_alternative<SunburstSector::SmallObjects>(sector.content)) {
                painter.setPen(Qt::NoPen);
                painter.setBrush(QBrush(QColor(0xEE, 0xF1, 0xF5), Qt::Dense6Pattern));
                painter.drawPath(path);
            }
        }
    }
}

QFont labelFont(const QFont& font)
{
    QFont small = font;
    small.setPointSizeF(small.pointSizeF() * 0.85);
    return small;
}

void drawLabels(QPainter& painter, const SunburstLabels& labels, const QFont& font, const TextColor& color, const Name& name)
{
    QFont small = labelFont(font);
    painter.setFont(small);
    QFontMetricsF metrics(small);
    for (const SunburstLabels::Inside& label : labels.inside) {
        painter.save();
        painter.translate(label.center.x, label.center.y);
        painter.rotate(label.degrees);
        painter.setPen(color(label.node));
        // A little wider than measured, so rounding never makes Qt drop a letter.
        double width = label.width + 2;
        painter.drawText(QRectF(-width / 2, -metrics.height() / 2, width, metrics.height()), Qt::AlignCenter, name(label.node));
        painter.restore();
    }
    for (const SunburstLabels::Outside& label : labels.outside) {
        QPolygonF leader;
        for (const SunburstGeometry::Point& point : label.leader)
            leader << QPointF(point.x, point.y);
        painter.setPen(QPen(MapPalette::leaderLine(), 1.0));
        painter.setBrush(Qt::NoBrush);
        painter.drawPolyline(leader);
        painter.setBrush(MapPalette::leaderLine());
        painter.drawEllipse(leader.front(), 2.0, 2.0);
        QRectF box(label.box.x, label.box.y, label.box.width + 2, label.box.height);
        if (label.side == SunburstLabels::Side::left)
            box.translate(-2, 0);
        QString text = metrics.elidedText(name(label.node), Qt::ElideMiddle, box.width());
        painter.setPen(MapPalette::labelText());
        int align = Qt::AlignVCenter | (label.side == SunburstLabels::Side::right ? Qt::AlignLeft : Qt::AlignRight);
        painter.drawText(box, align, text);
    }
}

void drawOutline(QPainter& painter, const SunburstGeometry& geometry, const SunburstSector& sector, const QColor& color, double width)
{
    painter.setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(sectorPath(geometry, sector.ring, sector.start, sector.end));
}

CenterText centerText(const SunburstGeometry& geometry, const QFont& font, const QString& title, const QString& detail)
{
    CenterText text;
    QPointF center(geometry.center.x, geometry.center.y);
    double radius = geometry.centerRadius - 2;
    text.radius = radius;
    if (radius <= 4)
        return text;
    double room = radius * 1.6;
    // A size never loses its unit: its font shrinks until it fits. A title wraps onto a
    // second line before it shrinks, and is shortened only when even that is not enough.
    text.detailFont = font;
    text.detailFont.setPointSizeF(text.detailFont.pointSizeF() * 1.5);
    text.detailFont.setWeight(QFont::DemiBold);
    while (QFontMetricsF(text.detailFont).horizontalAdvance(detail) > room && text.detailFont.pointSizeF() > 6)
        text.detailFont.setPointSizeF(text.detailFont.pointSizeF() - 0.5);
    text.titleFont = font;
    text.titleFont.setBold(true);
    auto titleBox = [&] { return QFontMetricsF(text.titleFont).boundingRect(QRectF(0, 0, room, 1000), titleFlags, title); };
    while ((titleBox().height() > 2.2 * QFontMetricsF(text.titleFont).height() || titleBox().width() > room) && text.titleFont.pointSizeF() > 6)
        text.titleFont.setPointSizeF(text.titleFont.pointSizeF() - 0.5);
    QFontMetricsF titleMetrics(text.titleFont);
    QFontMetricsF detailMetrics(text.detailFont);
    text.title = title;
    double titleHeight = std::min(titleBox().height(), 2 * titleMetrics.height());
    if (titleBox().height() > 2.2 * titleMetrics.height() || titleBox().width() > room) {
        text.title = titleMetrics.elidedText(title, Qt::ElideMiddle, room);
        titleHeight = titleMetrics.height();
    }
    text.detail = detail;
    double top = center.y() - (titleHeight + detailMetrics.height()) / 2;
    text.titleArea = QRectF(center.x() - room / 2, top, room, titleHeight);
    text.detailArea = QRectF(center.x() - room / 2, top + titleHeight, room, detailMetrics.height());
    text.titleBox = titleMetrics.boundingRect(text.titleArea, titleFlags, text.title);
    text.detailBox = detailMetrics.boundingRect(text.detailArea, Qt::AlignCenter, text.detail);
    return text;
}

void drawCenter(QPainter& painter, const SunburstGeometry& geometry, const QFont& font, const QString& title, const QString& detail)
{
    CenterText text = centerText(geometry, font, title, detail);
    if (text.radius <= 4)
        return;
    QPointF center(geometry.center.x, geometry.center.y);
    painter.setPen(QPen(QColor(0xE3, 0xE7, 0xED), 1));
    painter.setBrush(MapPalette::centerFill());
    painter.drawEllipse(center, text.radius, text.radius);
    painter.setPen(QColor(0x4B, 0x55, 0x63));
    painter.setFont(text.titleFont);
    painter.drawText(text.titleArea, titleFlags, text.title);
    painter.setPen(QColor(0x11, 0x18, 0x27));
    painter.setFont(text.detailFont);
    painter.drawText(text.detailArea, Qt::AlignCenter, text.detail);
}

}
