#include "ToolbarIcons.hpp"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include <functional>

namespace tarnwick::ToolbarIcons {

namespace {

// Paths are drawn on a 24 x 24 grid.
QIcon drawn(const std::function<void(QPainterPath&)>& shape, bool filled = false)
{
    QIcon icon;
    for (auto [mode, color] : { std::pair { QIcon::Normal, QColor(0x37, 0x41, 0x51) }, std::pair { QIcon::Disabled, QColor(0xB6, 0xBD, 0xC8) } }) {
        for (int scale : { 1, 2 }) {
            QPixmap pixmap(24 * scale, 24 * scale);
            pixmap.fill(Qt::transparent);
            pixmap.setDevicePixelRatio(scale);
            QPainter painter(&pixmap);
            painter.setRenderHint(QPainter::Antialiasing);
            QPainterPath path;
            shape(path);
            painter.setPen(QPen(color, 2.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            painter.setBrush(filled ? QBrush(color) : Qt::NoBrush);
            painter.drawPath(path);
            painter.end();
            icon.addPixmap(pixmap, mode);
        }
    }
    return icon;
}

}

QIcon back()
{
    return drawn([](QPainterPath& path) {
        path.moveTo(14.5, 6);
        path.lineTo(8.5, 12);
        path.lineTo(14.5, 18);
    });
}

QIcon forward()
{
    return drawn([](QPainterPath& path) {
        path.moveTo(9.5, 6);
        path.lineTo(15.5, 12);
        path.lineTo(9.5, 18);
    });
}

QIcon up()
{
    return drawn([](QPainterPath& path) {
        path.moveTo(12, 19);
        path.lineTo(12, 5.5);
        path.moveTo(6.5, 11);
        path.lineTo(12, 5.5);
        path.lineTo(17.5, 11);
    });
}

QIcon rescan()
{
    return drawn([](QPainterPath& path) {
        path.arcMoveTo(QRectF(5, 5, 14, 14), 60);
        path.arcTo(QRectF(5, 5, 14, 14), 60, 290);
        path.moveTo(18.7, 4.5);
        path.lineTo(18.6, 9.2);
        path.lineTo(14, 8.6);
    });
}

QIcon stop()
{
    return drawn([](QPainterPath& path) { path.addRoundedRect(QRectF(7, 7, 10, 10), 2, 2); }, true);
}

QIcon folder()
{
    return drawn([](QPainterPath& path) {
        path.moveTo(4, 7.5);
        path.lineTo(4, 18);
        path.lineTo(20, 18);
        path.lineTo(20, 9);
        path.lineTo(11.5, 9);
        path.lineTo(9.5, 6.5);
        path.lineTo(4.5, 6.5);
        path.closeSubpath();
    });
}

QIcon changes()
{
    // A clock with an arrow turning back: what changed since a time before.
    return drawn([](QPainterPath& path) {
        path.arcMoveTo(QRectF(4.5, 4.5, 15, 15), 150);
        path.arcTo(QRectF(4.5, 4.5, 15, 15), 150, -300);
        path.moveTo(4.2, 6.5);
        path.lineTo(5.5, 10.2);
        path.lineTo(9.2, 9.2);
        path.moveTo(12, 8);
        path.lineTo(12, 12);
        path.lineTo(14.8, 13.8);
    });
}

QIcon settings()
{
    // Three sliders.
    return drawn([](QPainterPath& path) {
        for (auto [y, knob] : { std::pair { 7.0, 9.0 }, std::pair { 12.0, 15.0 }, std::pair { 17.0, 7.5 } }) {
            path.moveTo(4.5, y);
            path.lineTo(knob - 2.2, y);
            path.moveTo(knob + 2.2, y);
            path.lineTo(19.5, y);
            path.addEllipse(QPointF(knob, y), 2.2, 2.2);
        }
    });
}

}
