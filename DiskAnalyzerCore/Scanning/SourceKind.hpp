#pragma once

#include <cstdint>

namespace tarnwick {

// What the user chose to scan. Keep the order: it is the order sources are listed in.
enum class SourceKind : std::uint8_t {
    folder,
    volume,
    macData, // the startup disk, scanned through its separate data volume
};

}
