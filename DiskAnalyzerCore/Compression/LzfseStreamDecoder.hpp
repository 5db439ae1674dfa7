#pragma once

#include "Compression/LzfseDecodeError.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

// Decodes a whole LZFSE stream: any mix of raw, LZVN and entropy-coded blocks up to the
// end-of-stream marker. Lzfse::decode wraps this in std::expected; this form stays usable by
// compilers whose standard library lacks it (the fuzzing build).
namespace tarnwick::LzfseStreamDecoder {

// On success `output` holds the decoded bytes; on failure its contents are unspecified.
std::optional<Lzfse::DecodeError> decode(std::span<const std::uint8_t> input, std::size_t maximumSize, std::vector<std::uint8_t>& output);

}
