#include "MenuBarViews.hpp"

#include "MapPalette.hpp"
#include "MenuBar/MenuBarItem.hpp"
#include "MenuBar/MenuBarTexts.hpp"
#include "ViewTexts.hpp"

#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace tarnwick::MenuBarViews {

namespace {

// Below this free share a gauge turns to the warning colour.
constexpr double nearlyFull = 0.1;

QString text(std::string_view view)
{
    return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
}

QColor alertColor()
{
    return QColor(0xE5, 0x48, 0x4D);
}

QColor warningColor()
{
    return QColor(0xF0, 0x8C, 0x00);
}

// Reads on light and dark panels alike.
QColor trackColor()
{
    return QColor(0x9C, 0xA3, 0xAF, 120);
}

void drawArrow(QPainter& painter, const QRectF& cell, const MenuBarSegment& segment)
{
    double size = cell.width() * 0.34;
    QPointF corner(cell.right() - size * 0.55, cell.bottom() - size * 0.6);
    bool grew = *segment.change > 0;
    QPainterPath arrow;
    double direction = grew ? -1 : 1;
    arrow.moveTo(corner.x(), corner.y() + direction * size * 0.5);
    arrow.lineTo(corner.x() - size * 0.5, corner.y() - direction * size * 0.35);
    arrow.lineTo(corner.x() + size * 0.5, corner.y() - direction * size * 0.35);
    arrow.closeSubpath();
    QColor color = grew ? MapPalette::growth() : MapPalette::shrinkage();
    painter.setPen(QPen(Qt::white, std::max(1.0, size * 0.12), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    // An uncertain change is drawn hollow.
    painter.setBrush(segment.changeIsUncertain ? QBrush(Qt::white) : QBrush(color));
    painter.drawPath(arrow);
    if (segment.changeIsUncertain) {
        painter.setPen(QPen(color, std::max(1.0, size * 0.12)));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(arrow);
    }
}

void drawCell(QPainter& painter, const QRectF& cell, const MenuBarSegment& segment, bool numbered)
{
    QPointF center = cell.center();
    double radius = cell.width() * 0.36;
    double stroke = std::max(1.5, cell.width() * 0.15);
    QRectF ring(center.x() - radius, center.y() - radius, 2 * radius, 2 * radius);
    QColor color = gaugeColor(segment);
    if (segment.freeShare) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(trackColor(), stroke, Qt::SolidLine, Qt::FlatCap));
        painter.drawEllipse(ring);
        // The used part runs clockwise from twelve o'clock.
        double used = 1.0 - *segment.freeShare;
        painter.setPen(QPen(color, stroke, Qt::SolidLine, used > 0.02 ? Qt::RoundCap : Qt::FlatCap));
        painter.drawArc(ring, 90 * 16, -static_cast<int>(std::lround(used * 360 * 16)));
    } else {
        // No share to show: a disk.
        QRectF body(center.x() - radius, center.y() - radius * 0.7, 2 * radius, 1.4 * radius);
        painter.setPen(QPen(color, std::max(1.2, stroke * 0.7)));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(body, radius * 0.3, radius * 0.3);
        painter.setBrush(color);
        painter.drawEllipse(QPointF(body.right() - radius * 0.45, body.bottom() - radius * 0.4), radius * 0.14, radius * 0.14);
    }
    // Large enough for words: the free share in the middle, or the disk's number.
    QString middle = segment.freeShare && cell.width() >= 30 ? QString::number(std::lround(*segment.freeShare * 100)) : QString();
    if (numbered && segment.number && middle.isEmpty() && cell.width() >= 14)
        middle = QString::number(*segment.number);
    if (!middle.isEmpty()) {
        QFont font;
        font.setPixelSize(std::max(6, static_cast<int>(radius * (middle.size() > 2 ? 0.7 : 0.9))));
        font.setWeight(QFont::Bold);
        painter.setFont(font);
        painter.setPen(segment.isAlerted ? alertColor() : QColor(0x4B, 0x55, 0x63));
        painter.drawText(ring, Qt::AlignCenter, middle);
    }
    if (segment.change)
        drawArrow(painter, cell, segment);
    if (segment.isAlerted) {
        double dot = cell.width() * 0.13;
        painter.setPen(QPen(Qt::white, std::max(1.0, dot * 0.35)));
        painter.setBrush(alertColor());
        painter.drawEllipse(QPointF(cell.right() - dot * 1.2, cell.top() + dot * 1.2), dot, dot);
    }
}

}

QColor gaugeColor(const MenuBarSegment& segment)
{
    if (segment.isAlerted)
        return alertColor();
    if (segment.freeShare && *segment.freeShare < nearlyFull)
        return warningColor();
    return MapPalette::accent();
}

QPixmap picture(const std::vector<MenuBarSegment>& segments, int side)
{
    QPixmap pixmap(side, side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    std::size_t count = std::min(segments.size(), maximumDrawn);
    if (count == 0) {
        // Nothing to show still leaves a quiet gauge, so that the item can be found.
        MenuBarSegment empty;
        painter.setOpacity(0.6);
        drawCell(painter, QRectF(0, 0, side, side), empty, false);
        return pixmap;
    }
    // One cell fills the square; two sit side by side; three or four share a grid of four.
    int columns = count == 1 ? 1 : 2;
    int rows = count <= 2 ? 1 : 2;
    double cellSide = static_cast<double>(side) / columns;
    double top = (side - cellSide * rows) / 2;
    for (std::size_t i = 0; i < count; ++i) {
        QRectF cell(static_cast<double>(i % 2) * cellSide, top + static_cast<double>(i / 2) * cellSide, cellSide, cellSide);
        drawCell(painter, count == 1 ? cell : cell.adjusted(0.5, 0.5, -0.5, -0.5), segments[i], count > 1);
    }
    return pixmap;
}

QIcon icon(const std::vector<MenuBarSegment>& segments)
{
    QIcon result;
    for (int side : { 16, 22, 24, 32, 48, 64 })
        result.addPixmap(picture(segments, side));
    return result;
}

QString toolTip(const std::vector<MenuBarSegment>& segments)
{
    QStringList lines { ViewTexts::appName };
    if (segments.empty())
        lines << text(MenuBarTexts::noDisks);
    for (const MenuBarSegment& segment : segments)
        lines << QString::fromStdString(MenuBarItem::description(segment));
    return lines.join(QStringLiteral("\n"));
}

}
