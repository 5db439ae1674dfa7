#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace tarnwick {

// A scanned place: its absolute path and the volume that holds it. The same path on another
// volume (a disk swapped under one mount point) is another place.
struct HistorySource {
    std::string path;
    std::string volume; // VolumeIdentity::identifier of the volume

    bool operator==(const HistorySource&) const = default;
};

}

template<>
struct std::hash<tarnwick::HistorySource> {
    std::size_t operator()(const tarnwick::HistorySource& source) const noexcept
    {
        std::size_t first = std::hash<std::string> {}(source.path);
        return first ^ (std::hash<std::string> {}(source.volume) + 0x9E3779B97F4A7C15ull + (first << 6) + (first >> 2));
    }
};
