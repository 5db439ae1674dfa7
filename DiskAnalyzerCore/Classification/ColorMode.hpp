#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tarnwick {

// How the map and the lists colour items. The raw value is what settings store; the
// command-line name is what the agent's --color and --by options accept.
enum class ColorMode : std::uint8_t {
    contentType,
    owner,
    lastModified,
    created,
    caches,
    hiddenFromFinder,
    onDiskVsSize,
};

inline constexpr std::array<ColorMode, 7> allColorModes {
    ColorMode::contentType, ColorMode::owner, ColorMode::lastModified, ColorMode::created,
    ColorMode::caches, ColorMode::hiddenFromFinder, ColorMode::onDiskVsSize,
};

namespace ColorModes {

std::string_view rawValue(ColorMode mode);
std::string_view title(ColorMode mode);
std::string_view commandLineName(ColorMode mode);
std::optional<ColorMode> fromRawValue(std::string_view raw);
std::optional<ColorMode> fromCommandLineName(std::string_view name);

// What the user is told about how folders take a group.
inline constexpr std::string_view groupRuleText = "The map shows where it is. A folder takes the group of at least half of its bytes.";

}

}
