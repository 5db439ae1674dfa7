#pragma once

#include "Compression/LzfseDecodeError.hpp"

#include <cstdint>
#include <optional>
#include <span>

// Decodes the payload of a bvxn block: byte-aligned opcodes, each copying literals from the
// payload and/or a match from earlier output.
//
// Example, the start of a 100-byte sentence: `ed` + 13 literals "hello world, " (small literal,
// L = 13), then `18 0d` (small distance: 00 011 000 -> L = 0, M = 3 + 3, D = 0 << 8 | 0x0d)
// repeats "hello " from 13 bytes back. The payload ends with `06` and 7 zero bytes.
namespace tarnwick::LzvnDecoder {

// Output goes to output[position, output.size()), which the payload must fill exactly, ending
// with the end-of-stream opcode as its last 8 bytes; matches may reach back to output[0].
std::optional<Lzfse::DecodeError> decode(std::span<const std::uint8_t> payload, std::span<std::uint8_t> output, std::size_t position);

}
