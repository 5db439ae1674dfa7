#pragma once

#include <cstdint>
#include <span>
#include <vector>

// Encodes a whole LZFSE stream. Lzfse::encode is the everyday entry point; this one also lets
// tests and the fuzzer force a block kind on inputs of any size.
namespace tarnwick::LzfseStreamEncoder {

enum class BlockKind : std::uint8_t {
    automatic, // raw below 8 bytes or when nothing is saved, LZVN below 4096 bytes, else entropy-coded
    uncompressed,
    lzvn, // inputs under 4 GiB
    entropyCoded,
};

std::vector<std::uint8_t> encode(std::span<const std::uint8_t> input, BlockKind kind = BlockKind::automatic);

}
