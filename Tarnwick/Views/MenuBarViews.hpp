#pragma once

#include "MenuBar/MenuBarSegment.hpp"

#include <QIcon>
#include <QPixmap>
#include <QString>

#include <vector>

// The tray item's picture and tooltip, drawn from its segments. A tray icon is square, so each
// segment is a small gauge of the disk's free space (red while an alert is exceeded), with an
// arrow for a change since yesterday and its number beside it; up to four share the square.
namespace tarnwick::MenuBarViews {

inline constexpr std::size_t maximumDrawn = 4;

// One picture of side pixels (at devicePixelRatio 1).
QPixmap picture(const std::vector<MenuBarSegment>& segments, int side);
// The picture at the sizes trays ask for.
QIcon icon(const std::vector<MenuBarSegment>& segments);
// "Tarnwick" and one line per segment, or the line that says there is nothing to show.
QString toolTip(const std::vector<MenuBarSegment>& segments);
// What a segment's gauge is drawn in: the alert colour, a warning when nearly full, else the accent.
QColor gaugeColor(const MenuBarSegment& segment);

}
