#pragma once

#include "Compression/FrequencyTables.hpp"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tarnwick {

// The header of an entropy-coded block, in either stored form: bvx1 (fixed 772 bytes of plain
// fields) or bvx2 (three packed 64-bit words, then bit-packed frequency tables).
//
// bvx2 layout, little-endian: magic, raw byte count (u32), then
//   word 0: literal count (20 bits) | literal payload bytes (20) | triple count (20) | 7 - literal padding (3)
//   word 1: four literal states (10 bits each) | L/M/D payload bytes (20) | 7 - L/M/D padding (3)
//   word 2: header size (32 bits) | L state (10) | M state (10) | D state (10)
// and the tables up to the header size. Example, 64 KiB of zeros: "bvx2", 00 00 01 00,
// 04 00 00 00 00 1d 00 70 (4 literals, 0 payload bytes, 29 triples, no padding),
// 00 00 00 00 00 32 00 20 (states 0, 50 payload bytes, 5 padding bits),
// 82 00 00 00 3d c8 e0 0f (130-byte header, states 61, 50, 254).
struct LzfseBlockHeader {
    std::uint32_t rawBytes = 0;
    std::uint32_t literalCount = 0; // a multiple of 4; includes the zero bytes padding the literals
    std::uint32_t matchCount = 0;
    std::uint32_t headerBytes = 0; // where the literal payload starts
    std::uint32_t literalPayloadBytes = 0;
    std::uint32_t lmdPayloadBytes = 0; // includes the 8-byte zero prefix
    std::uint32_t literalPaddingBits = 0; // unused bits at the top of each payload's last byte
    std::uint32_t lmdPaddingBits = 0;
    std::array<std::uint16_t, 4> literalStates {};
    std::uint16_t lState = 0;
    std::uint16_t mState = 0;
    std::uint16_t dState = 0;
    FrequencyTables frequencies;

    // What a walk over the stream needs to skip a block and bound its output.
    struct Extent {
        std::uint64_t blockBytes = 0;
        std::uint32_t rawBytes = 0;
        bool plausible = false; // false when the header's counts cannot produce rawBytes
    };
    // Empty when `block` is too short for the fixed fields (in the stream, a truncation).
    static std::optional<Extent> measure(std::span<const std::uint8_t> block);

    // `block` holds exactly the whole block, magic included. Empty when the header is invalid.
    static std::optional<LzfseBlockHeader> parse(std::span<const std::uint8_t> block);

    // Appends the bvx2 form; headerBytes is computed from the packed tables.
    void writeV2(std::vector<std::uint8_t>& output) const;
};

}
