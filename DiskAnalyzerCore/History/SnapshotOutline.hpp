#pragma once

#include "History/Snapshot.hpp"

#include <cstdint>
#include <optional>

namespace tarnwick {

// What a place's size history needs of one snapshot file, read without building the
// snapshot: the file's own facts, and the place's node, sizes and flags. A month of history
// then costs the decompression of each file and one pass over its records.
struct SnapshotOutline {
    Date date {};
    std::int64_t rootSize = 0; // Snapshot::size(0)
    std::optional<Snapshot::Volume> volume;
    bool hasColors = false;
    bool coversWhole = true; // the scan was allowed to read all of its source

    std::optional<std::int32_t> node; // the place's node, when the snapshot keeps it
    std::int64_t preciseSize = 0;     // Snapshot::size(node)
    std::int64_t roundedSize = 0;     // Snapshot::allocated[node]
    bool isIncomplete = false;        // the place's own flag
    // No folder at or below the place (or below the deepest folder on its way that the
    // snapshot keeps) is incomplete or unread: its size needs no matching with other scans.
    bool readWholeBelow = true;
    // A name on the way matched only once normalised, or not exactly: the whole snapshot must
    // be read to tell which folder the place is.
    bool needsWholeSnapshot = false;
};

}
