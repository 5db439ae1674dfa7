#pragma once

#include "Compression/LzfseDecodeError.hpp"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <span>
#include <vector>

// LZFSE compression, compatible with every other LZFSE decoder and encoder: streams of raw,
// LZVN and entropy-coded (FSE) blocks closed by an end-of-stream marker.
namespace tarnwick::Lzfse {

// A complete stream for `input`: stored raw when tiny or incompressible, LZVN-coded when small
// (under 4096 bytes), entropy-coded otherwise.
std::vector<std::uint8_t> encode(std::span<const std::uint8_t> input);

// Decodes a complete stream. The data says how large it decodes, so a caller that knows an upper
// bound passes it as `maximumSize` and damaged or hostile data cannot make it allocate more.
std::expected<std::vector<std::uint8_t>, DecodeError> decode(std::span<const std::uint8_t> input, std::size_t maximumSize);

}
