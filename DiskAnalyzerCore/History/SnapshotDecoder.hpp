#pragma once

#include "History/Snapshot.hpp"
#include "History/SnapshotOutline.hpp"

#include <string_view>

namespace tarnwick::SnapshotDecoder {

// Reads versions 5 and 6. Every count, varint and length is checked against the data that
// is left, so no input can make the reader crash, loop or allocate without bound.
std::expected<Snapshot, Snapshot::DecodingError> decode(std::span<const std::uint8_t> bytes);

// One place's outline (absolute path, or relative to the snapshot's place), checked as
// strictly as decode() checks the whole: a file one refuses, the other refuses too.
std::expected<SnapshotOutline, Snapshot::DecodingError> outline(std::span<const std::uint8_t> bytes, std::string_view place);

// The records after a header, from an uncompressed body (for tests of the layout).
std::expected<Snapshot, Snapshot::DecodingError> decodeBody(std::span<const std::uint8_t> body, std::uint8_t version);

}
