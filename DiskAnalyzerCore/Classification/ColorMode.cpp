#include "Classification/ColorMode.hpp"

namespace tarnwick::ColorModes {

namespace {

struct Texts {
    std::string_view raw;
    std::string_view title;
    std::string_view commandLine;
};

constexpr std::array<Texts, allColorModes.size()> texts { {
    { "contentType", "Content Type", "type" },
    { "owner", "Owner", "owner" },
    { "lastModified", "Last Modified", "modified" },
    { "created", "Created", "created" },
    { "caches", "Caches", "caches" },
    { "hiddenFromFinder", "Hidden", "hidden" },
    { "onDiskVsSize", "On Disk vs. Size", "ratio" },
} };

const Texts& textsOf(ColorMode mode)
{
    auto index = static_cast<std::size_t>(mode);
    return texts[index < texts.size() ? index : 0];
}

}

std::string_view rawValue(ColorMode mode) { return textsOf(mode).raw; }
std::string_view title(ColorMode mode) { return textsOf(mode).title; }
std::string_view commandLineName(ColorMode mode) { return textsOf(mode).commandLine; }

std::optional<ColorMode> fromRawValue(std::string_view raw)
{
    for (ColorMode mode : allColorModes) {
        if (textsOf(mode).raw == raw)
            return mode;
    }
    return std::nullopt;
}

std::optional<ColorMode> fromCommandLineName(std::string_view name)
{
    for (ColorMode mode : allColorModes) {
        if (textsOf(mode).commandLine == name)
            return mode;
    }
    return std::nullopt;
}

}
