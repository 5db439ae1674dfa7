#pragma once

#include "History/Snapshot.hpp"

namespace tarnwick::SnapshotDecoder {

// Reads versions 5 and 6. Every count, varint and length is checked against the data that
// is left, so no input can make the reader crash, loop or allocate without bound.
std::expected<Snapshot, Snapshot::DecodingError> decode(std::span<const std::uint8_t> bytes);

// The records after a header, from an uncompressed body (for tests of the layout).
std::expected<Snapshot, Snapshot::DecodingError> decodeBody(std::span<const std::uint8_t> body, std::uint8_t version);

}
