#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
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

// Fills one byte buffer front to back; grows it (doubling) only when a write would not fit.
class Writer {
public:
    explicit Writer(std::size_t capacity)
        : m_buffer(std::max<std::size_t>(capacity, 64))
    {
    }

    void byte(std::uint8_t value)
    {
        reserve(1);
        m_buffer[m_used++] = value;
    }

    void varint(std::uint64_t value)
    {
        reserve(maximumLength);
        std::uint8_t* out = m_buffer.data() + m_used;
        while (value >= 0x80) {
            *out++ = static_cast<std::uint8_t>(value | 0x80);
            value >>= 7;
        }
        *out++ = static_cast<std::uint8_t>(value);
        m_used = static_cast<std::size_t>(out - m_buffer.data());
    }

    void signedVarint(std::int64_t value) { varint(zigzag(value)); }

    void bytes(const void* data, std::size_t count)
    {
        reserve(count);
        if (count > 0)
            std::memcpy(m_buffer.data() + m_used, data, count);
        m_used += count;
    }

    [[nodiscard]] std::size_t size() const { return m_used; }

    std::vector<std::uint8_t> finish() &&
    {
        m_buffer.resize(m_used);
        return std::move(m_buffer);
    }

private:
    void reserve(std::size_t extra)
    {
        if (m_used + extra > m_buffer.size())
            m_buffer.resize(std::max(m_buffer.size() * 2, m_used + extra));
    }

    std::vector<std::uint8_t> m_buffer;
    std::size_t m_used = 0;
};

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
