#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

// Constants of the LZFSE stream format, shared by the encoder and the decoder.
namespace tarnwick::LzfseFormat {

// Every block starts with one of these little-endian words ("bvx$", "bvx-", ...).
enum class BlockMagic : std::uint32_t {
    endOfStream = 0x24787662,
    uncompressed = 0x2d787662,
    lzvn = 0x6e787662,
    lzfseV1 = 0x31787662,
    lzfseV2 = 0x32787662,
};

inline constexpr std::size_t magicSize = 4;
inline constexpr std::size_t uncompressedHeaderSize = 8;
inline constexpr std::size_t lzvnHeaderSize = 12;
inline constexpr std::size_t v1HeaderSize = 772;
inline constexpr std::size_t v2FixedHeaderSize = 32;

// Inputs below these sizes are stored raw, or sent to LZVN instead of the entropy coder.
inline constexpr std::size_t smallestCompressedInput = 8;
inline constexpr std::size_t smallestEntropyCodedInput = 4096;

inline constexpr std::uint32_t maxLiteralsPerBlock = 40000;
inline constexpr std::uint32_t maxMatchesPerBlock = 10000;
inline constexpr std::uint32_t maxLValue = 315;
inline constexpr std::uint32_t maxMValue = 2359;
inline constexpr std::uint32_t maxDValue = 262139;

inline constexpr std::size_t literalSymbols = 256;
inline constexpr std::size_t lSymbols = 20;
inline constexpr std::size_t mSymbols = 20;
inline constexpr std::size_t dSymbols = 64;
inline constexpr std::uint32_t literalStates = 1024;
inline constexpr std::uint32_t lStates = 64;
inline constexpr std::uint32_t mStates = 64;
inline constexpr std::uint32_t dStates = 256;
inline constexpr std::size_t frequencyCount = lSymbols + mSymbols + dSymbols + literalSymbols;

// The L/M/D stream starts with 8 zero bytes that no correct decoder consumes.
inline constexpr std::size_t lmdPrefixSize = 8;

// L, M and D are coded as a symbol plus raw "extra" bits holding value - base(symbol).
inline constexpr std::array<std::uint8_t, lSymbols> lExtraBits { 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 3, 5, 8 };
inline constexpr std::array<std::uint32_t, lSymbols> lBase { 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 20, 28, 60 };
inline constexpr std::array<std::uint8_t, mSymbols> mExtraBits { 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 5, 8, 11 };
inline constexpr std::array<std::uint32_t, mSymbols> mBase { 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 24, 56, 312 };

inline constexpr std::array<std::uint8_t, dSymbols> dExtraBits = [] {
    std::array<std::uint8_t, dSymbols> bits {};
    for (std::size_t s = 0; s < dSymbols; ++s)
        bits[s] = static_cast<std::uint8_t>(s >> 2);
    return bits;
}();

inline constexpr std::array<std::uint32_t, dSymbols> dBase = [] {
    std::array<std::uint32_t, dSymbols> base {};
    for (std::size_t s = 1; s < dSymbols; ++s)
        base[s] = base[s - 1] + (1u << dExtraBits[s - 1]);
    return base;
}();

// The symbol of a value is the largest symbol whose base does not exceed it.
constexpr std::uint32_t lSymbol(std::uint32_t value)
{
    if (value < 16)
        return value;
    return 16 + (value >= 20) + (value >= 28) + (value >= 60);
}

constexpr std::uint32_t mSymbol(std::uint32_t value)
{
    if (value < 16)
        return value;
    return 16 + (value >= 24) + (value >= 56) + (value >= 312);
}

// D bases grow as 4 * (2^e - 1) + j * 2^e for symbol 4e + j, so value + 4 gives e and j directly.
constexpr std::uint32_t dSymbol(std::uint32_t value)
{
    std::uint32_t shifted = value + 4;
    std::uint32_t extra = static_cast<std::uint32_t>(std::bit_width(shifted)) - 3;
    return 4 * extra + (shifted >> extra) - 4;
}

}
