#pragma once

#include "Classification/ColorGroup.hpp"
#include "Classification/ColorMode.hpp"
#include "Classification/NodeColor.hpp"

#include <QColor>

#include <cstddef>

namespace tarnwick {

class ColorMap;

// The colours of the map, the legend and the list. Groups get distinct hues; shares and
// ratios run along a gradient; mixed and unknown are greys, so that colour always means
// "this group" and grey always means "no single group".
namespace MapPalette {

// A group of a mode's bucket list; bucket is its position there, which tells owners apart.
QColor group(const ColorGroup& group, std::size_t bucket);
// A share of bytes (0 to 1) in the share modes: a light neutral up to the mode's strong hue.
QColor share(ColorMode mode, double fraction);
// Size on disk over logical size: green below 1 (compressed, sparse), neutral at 1, red above.
QColor ratio(double value);
QColor mixed();
QColor unknown();
// Finds the group's bucket in the map for group colours.
QColor color(const NodeColor& color, const ColorMap& map);

// The parts of the map that are not tree nodes, and the map's chrome.
QColor smallObjects();
QColor available();
QColor unaccounted();
// The file system's reserve: free, but not for the user.
QColor reserved();
QColor uncolored(int branch);
QColor sectorBorder();
QColor centerFill();
QColor selectionOutline();
QColor accent();

// The changes view: the veil that pales the map, and the colours of growth and shrinkage.
QColor changeVeil();
QColor growth();
QColor shrinkage();

// Rings further out are drawn a little lighter, which keeps depth readable without lines.
QColor forRing(const QColor& base, int ring);
// Text drawn on top of a fill: dark or white, whichever contrasts more with it.
QColor textOn(const QColor& fill);
// The contrast ratio of two colours as the web's accessibility guidelines measure it, 1 to 21.
double contrast(const QColor& first, const QColor& second);
// A fill as it shows under the changes view's veil.
QColor veiled(const QColor& fill);
// Names beside the map and their leader lines.
QColor labelText();
QColor leaderLine();

}

}
