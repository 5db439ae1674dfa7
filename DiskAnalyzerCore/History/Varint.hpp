#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

// Unsigned LEB128 varints (7 bits a byte, least significant group first, at most 10 bytes)
// and the zigzag folding that keeps small signed values short.
namespace tarnwick::Varint {

inline constexpr std::size_t maximumLength = 10;

constexpr std::uint64_t zigzag(std::int64_t value)
{
    return (static_cast<std::uint64_t>(value) << 1) ^ static_cast<std::uint64_t>(value >> 63);
}

constexpr std::int64_t unzigzag(std::uint64_t folded)
{
    return static_cast<std::int64_t>((folded >> 1) ^ (~(folded & 1) + 1));
}

inline void append(std::vector<std::uint8_t>& out, std::uint64_t value)
{
    std::uint8_t bytes[maximumLength];
    std::size_t length = 0;
    while (value >= 0x80) {
        bytes[length++] = static_cast<std::uint8_t>(value | 0x80);
        value >>= 7;
    }
    bytes[length++] = static_cast<std::uint8_t>(value);
    out.insert(out.end(), bytes, bytes + length);
}

inline void appendSigned(std::vector<std::uint8_t>& out, std::int64_t value) { append(out, zigzag(value)); }

// Reads bytes front to back; every read checks the bounds and fails (empty optional) rather
// than running past the end, so a reader of untrusted data never crashes.
class Reader {
public:
    explicit Reader(std::span<const std::uint8_t> data)
        : m_data(data)
    {
    }

    [[nodiscard]] std::size_t remaining() const { return m_data.size() - m_position; }
    [[nodiscard]] bool atEnd() const { return m_position == m_data.size(); }

    std::optional<std::uint8_t> byte()
    {
        if (m_position >= m_data.size())
            return std::nullopt;
        return m_data[m_position++];
    }

    // Fails when the data ends inside the varint, when a 10th byte still has its high bit
    // set, or when the value does not fit 64 bits.
    std::optional<std::uint64_t> varint()
    {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < maximumLength; ++i) {
            if (m_position >= m_data.size())
                return std::nullopt;
            std::uint8_t byte = m_data[m_position++];
            if (i == maximumLength - 1 && byte > 1)
                return std::nullopt;
            value |= static_cast<std::uint64_t>(byte & 0x7F) << (7 * i);
            if ((byte & 0x80) == 0)
                return value;
        }
        return std::nullopt;
    }

    std::optional<std::int64_t> signedVarint()
    {
        std::optional<std::uint64_t> folded = varint();
        if (!folded)
            return std::nullopt;
        return unzigzag(*folded);
    }

    std::optional<std::span<const std::uint8_t>> bytes(std::uint64_t count)
    {
        if (count > remaining())
            return std::nullopt;
        auto result = m_data.subspan(m_position, static_cast<std::size_t>(count));
        m_position += static_cast<std::size_t>(count);
        return result;
    }

private:
    std::span<const std::uint8_t> m_data;
    std::size_t m_position = 0;
};

}
