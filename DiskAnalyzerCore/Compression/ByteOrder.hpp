#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

// Little-endian loads and stores at any alignment, as the LZFSE formats store every integer.
namespace tarnwick::ByteOrder {

static_assert(std::endian::native == std::endian::little, "the codec reads and writes integers in host order");

inline std::uint16_t load16(const std::uint8_t* bytes)
{
    std::uint16_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

inline std::uint32_t load32(const std::uint8_t* bytes)
{
    std::uint32_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

inline std::uint64_t load64(const std::uint8_t* bytes)
{
    std::uint64_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

inline void store32(std::uint8_t* bytes, std::uint32_t value) { std::memcpy(bytes, &value, sizeof value); }
inline void store64(std::uint8_t* bytes, std::uint64_t value) { std::memcpy(bytes, &value, sizeof value); }

}
