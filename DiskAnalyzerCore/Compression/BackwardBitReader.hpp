#pragma once

#include "Compression/ByteOrder.hpp"

#include <cstdint>
#include <span>

namespace tarnwick {

// Reads an LZFSE bit stack: values come out last-written first, each with its own bit order.
// The reader keeps 56 to 63 unread bits in a 64-bit word after every refill, so callers refill
// once per group of reads totalling at most 56 bits (a literal quad, an L/M/D triple).
//
// Bytes outside the payload read as zeros instead of touching memory around it. A correct stream
// never consumes a bit below the payload's start; overran() reports a stream that did.
class BackwardBitReader {
public:
    // `bitCount` is the number of meaningful bits: 8 * payload size minus the padding bits.
    BackwardBitReader(std::span<const std::uint8_t> payload, std::int64_t bitCount)
        : m_bytes(payload.data())
        , m_size(static_cast<std::int64_t>(payload.size()))
        , m_offset((bitCount >> 3) - 7)
        , m_available(static_cast<int>(bitCount & 7) + 56)
    {
        m_word = load(m_offset);
    }

    void refill()
    {
        int wholeBytes = (63 - m_available) >> 3;
        m_offset -= wholeBytes;
        m_available += wholeBytes * 8;
        m_word = load(m_offset);
    }

    // At most 56 bits since the last refill; 0 bits are allowed.
    std::uint64_t read(unsigned count)
    {
        m_available -= static_cast<int>(count);
        return (m_word >> m_available) & ((std::uint64_t { 1 } << count) - 1);
    }

    [[nodiscard]] bool overran() const { return m_offset * 8 + m_available < 0; }

private:
    std::uint64_t load(std::int64_t offset) const
    {
        if (offset >= 0 && offset + 8 <= m_size) [[likely]]
            return ByteOrder::load64(m_bytes + offset);
        std::uint64_t word = 0;
        for (int i = 0; i < 8; ++i) {
            std::int64_t index = offset + i;
            if (index >= 0 && index < m_size)
                word |= std::uint64_t { m_bytes[index] } << (8 * i);
        }
        return word;
    }

    const std::uint8_t* m_bytes;
    std::int64_t m_size;
    std::int64_t m_offset; // the word holds payload bytes [m_offset, m_offset + 8)
    int m_available; // unread bits at the bottom of the word
    std::uint64_t m_word = 0;
};

}
