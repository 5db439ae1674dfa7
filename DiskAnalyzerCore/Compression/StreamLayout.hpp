#pragma once

#include "Compression/LzfseDecodeError.hpp"
#include "Compression/LzfseFormat.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tarnwick {

// The blocks of an LZFSE stream, found by walking their headers without decoding them. The
// stream carries no total size, so this walk is what sizes the output before decoding starts.
class StreamLayout {
public:
    struct Block {
        LzfseFormat::BlockMagic magic;
        std::size_t offset = 0; // of the magic in the input
        std::size_t size = 0; // header and payload
        std::uint32_t rawBytes = 0;
    };

    // Fails when a block is unknown or cut off, the end marker is missing, a header announces
    // more output than its payload could produce, or the total passes `maximumSize`.
    std::optional<Lzfse::DecodeError> read(std::span<const std::uint8_t> input, std::size_t maximumSize);

    [[nodiscard]] const std::vector<Block>& blocks() const { return m_blocks; }
    [[nodiscard]] std::size_t decodedSize() const { return m_decodedSize; }

private:
    struct Measured {
        std::uint64_t size = 0;
        std::uint32_t rawBytes = 0;
    };
    static std::optional<Lzfse::DecodeError> measure(std::span<const std::uint8_t> rest, Measured& block);

    std::vector<Block> m_blocks;
    std::size_t m_decodedSize = 0;
};

}
