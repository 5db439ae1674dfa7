#include "MapPalette.hpp"

#include "Classification/ColorMap.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace tarnwick::MapPalette {

namespace {

// Indexed by ContentCategory's raw value.
constexpr std::array<QRgb, 13> contentColors {
    0xFFEF5A5A, // video: coral red
    0xFFF5B02E, // photos: amber
    0xFFE25C9E, // music: pink
    0xFF3E82F0, // documents: blue
    0xFF8B63E8, // apps: violet
    0xFF17A884, // developer: emerald
    0xFF1BB4CF, // ai: cyan
    0xFF5B61D9, // virtual machines: indigo
    0xFFB07B3C, // archives: brown
    0xFFF28B30, // caches: orange
    0xFF8CC43A, // logs: lime
    0xFF6B7A90, // system: slate
    0xFFB9A98F, // other: sand
};

// Indexed by DateGroup: recent is warm, old is cool.
constexpr std::array<QRgb, 5> dateColors {
    0xFFE5484D, // today
    0xFFF27B35, // past 7 days
    0xFFF2B53A, // past 30 days
    0xFF5CB874, // past year
    0xFF4C7FD9, // older
};

constexpr std::array<QRgb, 12> ownerColors {
    0xFF3E82F0, 0xFFEF5A5A, 0xFF17A884, 0xFFF5B02E, 0xFF8B63E8, 0xFF1BB4CF,
    0xFFE25C9E, 0xFF8CC43A, 0xFF5B61D9, 0xFFF28B30, 0xFF2E9C9C, 0xFFB05ED1,
};

QColor mix(const QColor& from, const QColor& to, double t)
{
    t = std::clamp(t, 0.0, 1.0);
    auto channel = [t](int a, int b) { return static_cast<int>(std::lround(a + (b - a) * t)); };
    return QColor(channel(from.red(), to.red()), channel(from.green(), to.green()), channel(from.blue(), to.blue()));
}

// A grey without hue, so a gradient from it only gains colour. The lightest of the map's greys:
// none of a share is nearly nothing, while unknown, the smaller items and mixed are darker,
// each a step apart.
const QColor neutral(0xE8, 0xE8, 0xE8);

}

QColor group(const ColorGroup& group, std::size_t bucket)
{
    switch (group.kind()) {
    case ColorGroup::Kind::content:
        return QColor::fromRgb(contentColors[static_cast<std::size_t>(*group.contentCategory())]);
    case ColorGroup::Kind::date:
        return QColor::fromRgb(dateColors[group.dateGroup()->raw()]);
    case ColorGroup::Kind::owner:
        return QColor::fromRgb(ownerColors[bucket % ownerColors.size()]);
    case ColorGroup::Kind::macOS:
        return QColor(0x6B, 0x7A, 0x90);
    case ColorGroup::Kind::noOwner:
        return QColor(0xC6, 0xCE, 0xDA);
    case ColorGroup::Kind::otherApps:
        return QColor(0xB9, 0xA9, 0x8F);
    case ColorGroup::Kind::hidden:
        return share(ColorMode::hiddenFromFinder, 1.0);
    case ColorGroup::Kind::visible:
        return share(ColorMode::hiddenFromFinder, 0.0);
    case ColorGroup::Kind::unknown:
        break;
    }
    return unknown();
}

QColor share(ColorMode mode, double fraction)
{
    QColor strong = mode == ColorMode::caches ? QColor(0xF2, 0x7A, 0x1A) : QColor(0x8B, 0x4F, 0xE0);
    // A gentle curve: small shares already show, so that a few percent of caches is visible.
    return mix(neutral, strong, std::sqrt(std::clamp(fraction, 0.0, 1.0)));
}

QColor ratio(double value)
{
    if (!(value > 0))
        return unknown();
    // One halving or doubling reaches the full colour.
    double step = std::clamp(std::log2(value), -1.0, 1.0);
    if (step < 0)
        return mix(neutral, QColor(0x17, 0xA8, 0x84), -step);
    return mix(neutral, QColor(0xE5, 0x48, 0x4D), step);
}

QColor mixed()
{
    return QColor(0x85, 0x8B, 0x95);
}

QColor unknown()
{
    return QColor(0xAB, 0xB3, 0xC0);
}

QColor color(const NodeColor& color, const ColorMap& map)
{
    switch (color.kind()) {
    case NodeColor::Kind::group: {
        const auto& groups = map.groups();
        for (std::size_t bucket = 0; bucket < groups.size(); ++bucket) {
            if (groups[bucket] == *color.colorGroup())
                return group(groups[bucket], bucket);
        }
        return group(*color.colorGroup(), 0);
    }
    case NodeColor::Kind::share:
        return share(map.mode(), color.value());
    case NodeColor::Kind::ratio:
        return ratio(color.value());
    case NodeColor::Kind::mixed:
        return mixed();
    case NodeColor::Kind::unknown:
        break;
    }
    return unknown();
}

QColor smallObjects()
{
    return QColor(0xC8, 0xCE, 0xD8);
}

QColor available()
{
    return QColor(0xEC, 0xF0, 0xF4);
}

QColor unaccounted()
{
    return QColor(0x94, 0x9D, 0xAB);
}

QColor reserved()
{
    return QColor(0xD5, 0xDB, 0xE3);
}

QColor uncolored(int branch)
{
    return (branch % 2 == 0) ? QColor(0xC9, 0xD0, 0xDA) : QColor(0xB8, 0xC0, 0xCC);
}

QColor sectorBorder()
{
    return QColor(0xFF, 0xFF, 0xFF);
}

QColor centerFill()
{
    return QColor(0xF7, 0xF8, 0xFA);
}

QColor selectionOutline()
{
    return QColor(0x1F, 0x29, 0x37);
}

QColor accent()
{
    return QColor(0x2F, 0x6F, 0xED);
}

QColor changeVeil()
{
    return QColor(0xFF, 0xFF, 0xFF, 165);
}

QColor growth()
{
    return QColor(0xE0, 0x4F, 0x1A);
}

QColor shrinkage()
{
    return QColor(0x1E, 0x9E, 0x6A);
}

QColor forRing(const QColor& base, int ring)
{
    return mix(base, QColor(Qt::white), std::min(0.07 * ring, 0.45));
}

namespace {

double relativeLuminance(const QColor& color)
{
    auto linear = [](double channel) { return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

}

double contrast(const QColor& first, const QColor& second)
{
    double a = relativeLuminance(first);
    double b = relativeLuminance(second);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

QColor textOn(const QColor& fill)
{
    QColor dark(0x1F, 0x29, 0x37);
    QColor light(Qt::white);
    return contrast(fill, dark) >= contrast(fill, light) ? dark : light;
}

QColor veiled(const QColor& fill)
{
    QColor veil = changeVeil();
    return mix(fill, QColor(veil.red(), veil.green(), veil.blue()), veil.alphaF());
}

QColor labelText()
{
    return QColor(0x37, 0x41, 0x51);
}

QColor leaderLine()
{
    return QColor(0x9C, 0xA3, 0xAF);
}

}
