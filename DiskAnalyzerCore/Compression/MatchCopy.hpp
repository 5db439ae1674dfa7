#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Copies for the decoders' inner loops. The fast paths move 8 or 16 bytes at a time and may
// write up to 15 bytes past the copy's end, so callers pass `room`, the bytes writable from the
// destination on; with too little room they copy exactly. Bytes written past the end are
// overwritten by the output that follows (a block must fill its whole range to decode).
namespace tarnwick::MatchCopy {

inline constexpr std::size_t slack = 16;

inline void copyChunks16(std::uint8_t* destination, const std::uint8_t* source, std::size_t count)
{
    for (std::size_t i = 0; i < count; i += 16)
        std::memcpy(destination + i, source + i, 16);
}

inline void copyChunks8(std::uint8_t* destination, const std::uint8_t* source, std::size_t count)
{
    for (std::size_t i = 0; i < count; i += 8)
        std::memcpy(destination + i, source + i, 8);
}

// `source` must have `slack` readable bytes past `count` when room allows the fast path.
inline void copyLiterals(std::uint8_t* destination, const std::uint8_t* source, std::size_t count, std::size_t room)
{
    if (count + slack <= room)
        copyChunks16(destination, source, count);
    else
        std::memcpy(destination, source, count);
}

// A match repeats earlier output and may overlap itself (distance < length), which must read
// as a forward byte-by-byte copy. Chunks never read bytes the same chunk writes: a distance
// under 8 first lays down 8 bytes one at a time, after which the output repeats with a period
// of the smallest multiple of the distance that is at least 8.
inline void copyMatch(std::uint8_t* destination, std::size_t distance, std::size_t length, std::size_t room)
{
    const std::uint8_t* source = destination - distance;
    if (length + slack > room) {
        for (std::size_t i = 0; i < length; ++i)
            destination[i] = source[i];
        return;
    }
    if (distance >= 16)
        return copyChunks16(destination, source, length);
    if (distance >= 8)
        return copyChunks8(destination, source, length);
    static constexpr std::array<std::uint8_t, 8> period { 0, 8, 8, 9, 8, 10, 12, 14 };
    for (std::size_t i = 0; i < 8; ++i)
        destination[i] = source[i];
    if (length > 8)
        copyChunks8(destination + 8, destination + 8 - period[distance], length - 8);
}

}
