#pragma once

#include "Compression/ByteOrder.hpp"

#include <cstdint>
#include <vector>

namespace tarnwick {

// Appends values LSB-first into a byte string, the order an LZFSE bit stack is written in.
// Callers flush after each group of writes totalling at most 56 bits.
class BitWriter {
public:
    explicit BitWriter(std::size_t maximumBits)
        : m_bytes(maximumBits / 8 + 16)
    {
    }

    // `value` must fit in `count` bits.
    void write(std::uint64_t value, unsigned count)
    {
        m_pending |= value << m_pendingBits;
        m_pendingBits += count;
    }

    void flush()
    {
        ByteOrder::store64(m_bytes.data() + m_used, m_pending);
        unsigned wholeBytes = m_pendingBits >> 3;
        m_used += wholeBytes;
        m_pending >>= wholeBytes * 8;
        m_pendingBits &= 7;
    }

    struct Result {
        std::vector<std::uint8_t> bytes;
        unsigned paddingBits = 0; // zero bits at the top of the last byte
    };

    Result finish() &&
    {
        flush();
        unsigned padding = m_pendingBits == 0 ? 0 : 8 - m_pendingBits;
        if (m_pendingBits != 0)
            m_bytes[m_used++] = static_cast<std::uint8_t>(m_pending);
        m_bytes.resize(m_used);
        return { std::move(m_bytes), padding };
    }

private:
    std::vector<std::uint8_t> m_bytes;
    std::size_t m_used = 0;
    std::uint64_t m_pending = 0;
    unsigned m_pendingBits = 0;
};

}
