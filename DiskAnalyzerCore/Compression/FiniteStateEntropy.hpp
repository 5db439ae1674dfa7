#pragma once

#include "Compression/BackwardBitReader.hpp"
#include "Compression/BitWriter.hpp"

#include <cstdint>
#include <span>

// LZFSE's table-based asymmetric numeral system coder. Unlike other FSE variants, each symbol
// owns one contiguous run of states, runs laid out in increasing symbol order.
namespace tarnwick::FiniteStateEntropy {

// Decoding a symbol from state S: emit `symbol`, then S = delta + (next `bitCount` bits).
struct DecoderEntry {
    std::int16_t delta = 0;
    std::uint8_t bitCount = 0;
    std::uint8_t symbol = 0;
};

// The same for L/M/D, with the symbol already turned into its value base and extra-bit count;
// state bits and extra bits are read as one number of `totalBits` bits, state bits on top.
struct ValueDecoderEntry {
    std::uint8_t totalBits = 0;
    std::uint8_t extraBits = 0;
    std::int16_t delta = 0;
    std::uint32_t base = 0;
};

struct EncoderEntry {
    std::int16_t threshold = 0; // states at or above it write `shift` bits, the others one fewer
    std::int16_t shift = 0;
    std::int16_t delta0 = 0;
    std::int16_t delta1 = 0;
};

// Scales symbol counts to frequencies summing exactly to `stateCount`, every counted symbol
// getting at least 1. This is the reference encoder's rounding, so equal inputs give equal tables.
void normalize(std::span<const std::uint32_t> counts, std::uint32_t stateCount, std::span<std::uint16_t> frequencies);

std::uint32_t sum(std::span<const std::uint16_t> frequencies);

// The table must have as many entries as the frequencies sum to (a power of two).
void buildDecoder(std::span<const std::uint16_t> frequencies, std::span<DecoderEntry> table);
void buildValueDecoder(std::span<const std::uint16_t> frequencies, std::span<const std::uint8_t> extraBits,
    std::span<const std::uint32_t> bases, std::span<ValueDecoderEntry> table);
void buildEncoder(std::span<const std::uint16_t> frequencies, std::uint32_t stateCount, std::span<EncoderEntry> table);

inline std::uint8_t decode(std::uint32_t& state, const DecoderEntry* table, BackwardBitReader& reader)
{
    DecoderEntry entry = table[state];
    state = static_cast<std::uint32_t>(entry.delta + static_cast<std::int32_t>(reader.read(entry.bitCount)));
    return entry.symbol;
}

inline std::uint32_t decodeValue(std::uint32_t& state, const ValueDecoderEntry* table, BackwardBitReader& reader)
{
    ValueDecoderEntry entry = table[state];
    std::uint64_t bits = reader.read(entry.totalBits);
    state = static_cast<std::uint32_t>(entry.delta + static_cast<std::int32_t>(bits >> entry.extraBits));
    return entry.base + static_cast<std::uint32_t>(bits & ((std::uint64_t { 1 } << entry.extraBits) - 1));
}

// Encoding runs backwards: the state reached after the stream's first symbol is what the
// decoder starts from.
inline void encode(std::uint32_t& state, const EncoderEntry& entry, BitWriter& writer)
{
    bool full = static_cast<std::int32_t>(state) >= entry.threshold;
    unsigned count = static_cast<unsigned>(entry.shift - (full ? 0 : 1));
    writer.write(state & ((1u << count) - 1), count);
    state = static_cast<std::uint32_t>((full ? entry.delta0 : entry.delta1) + static_cast<std::int32_t>(state >> count));
}

}
