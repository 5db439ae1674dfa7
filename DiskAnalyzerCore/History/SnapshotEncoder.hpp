#pragma once

#include "History/Snapshot.hpp"

namespace tarnwick::SnapshotEncoder {

// The file's bytes: magic, version 6 and the LZFSE-compressed body. Asking for colours of a
// snapshot without them is a programming error (asserted; without colours in release builds).
std::expected<std::vector<std::uint8_t>, Snapshot::EncodingError> encode(const Snapshot& snapshot, Snapshot::Colors colors);

// The uncompressed body, for tests and benchmarks that look at the layout itself.
std::expected<std::vector<std::uint8_t>, Snapshot::EncodingError> body(const Snapshot& snapshot, Snapshot::Colors colors);

// The header written for a snapshot: day values count from the root's last change (the
// newest date in the snapshot), or from 0 without one.
Snapshot::Header header(const Snapshot& snapshot, bool withColors);

}
