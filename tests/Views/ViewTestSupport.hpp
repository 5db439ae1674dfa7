#pragma once

#include "Geometry/SunburstGeometry.hpp"
#include "History/HistoryStore.hpp"
#include "Geometry/SunburstLayout.hpp"
#include "Views/SunburstView.hpp"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPoint>
#include <QThread>

#include <QString>

#include <cmath>
#include <ostream>
#include <functional>
#include <numbers>
#include <optional>

// Failed comparisons of texts print the texts.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace tarnwick::testing {

// Runs the event loop until done() holds, for at most twenty seconds.
inline bool waitFor(const std::function<bool()>& done)
{
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > 20'000)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(2);
    }
    QCoreApplication::processEvents();
    return true;
}

// A save of a few bytes at this moment: enough for the history to hold a place.
inline HistoryStore::SnapshotFiles tinySnapshot()
{
    HistoryStore::SnapshotFiles files;
    files.date = std::chrono::system_clock::now();
    files.total = 1000;
    files.current = { 1 };
    files.day = { 1 };
    return files;
}

// The sector a node has on the map, if it is drawn.
inline std::optional<SunburstSector> sectorOf(SunburstView& map, NodeID node)
{
    for (const auto& ring : map.currentLayout().rings) {
        for (const SunburstSector& sector : ring) {
            if (sector.node() == node)
                return sector;
        }
    }
    return std::nullopt;
}

// A point inside a sector: at a share of the way through its angle and through its ring.
inline QPointF pointIn(const SunburstGeometry& geometry, const SunburstSector& sector, double along = 0.5, double across = 0.5)
{
    double fraction = sector.start + (sector.end - sector.start) * along;
    double radius = geometry.centerRadius + (sector.ring + across) * geometry.ringWidth;
    double angle = fraction * 2 * std::numbers::pi;
    return QPointF(geometry.center.x + radius * std::sin(angle), geometry.center.y - radius * std::cos(angle));
}

}
