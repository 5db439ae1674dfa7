#include "Compression/StreamLayout.hpp"

#include "Compression/ByteOrder.hpp"
#include "Compression/LzfseBlockHeader.hpp"

namespace tarnwick {

using namespace LzfseFormat;
using Lzfse::DecodeError;

namespace {

// One LZVN payload byte produces at most this many output bytes (a 2-byte match opcode copies
// up to 271), which bounds what an honest bvxn header can announce.
constexpr std::uint64_t lzvnMostBytesPerPayloadByte = 136;

}

std::optional<DecodeError> StreamLayout::measure(std::span<const std::uint8_t> rest, Measured& block)
{
    auto magic = static_cast<BlockMagic>(ByteOrder::load32(rest.data()));
    switch (magic) {
    case BlockMagic::uncompressed:
        if (rest.size() < uncompressedHeaderSize)
            return DecodeError::truncated;
        block.rawBytes = ByteOrder::load32(rest.data() + 4);
        block.size = uncompressedHeaderSize + std::uint64_t { block.rawBytes };
        return std::nullopt;
    case BlockMagic::lzvn: {
        if (rest.size() < lzvnHeaderSize)
            return DecodeError::truncated;
        block.rawBytes = ByteOrder::load32(rest.data() + 4);
        std::uint32_t payload = ByteOrder::load32(rest.data() + 8);
        block.size = lzvnHeaderSize + std::uint64_t { payload };
        return block.rawBytes > payload * lzvnMostBytesPerPayloadByte ? std::optional(DecodeError::damagedHeader) : std::nullopt;
    }
    case BlockMagic::lzfseV1:
    case BlockMagic::lzfseV2: {
        auto extent = LzfseBlockHeader::measure(rest);
        if (!extent)
            return DecodeError::truncated;
        block.rawBytes = extent->rawBytes;
        block.size = extent->blockBytes;
        return extent->plausible ? std::nullopt : std::optional(DecodeError::damagedHeader);
    }
    case BlockMagic::endOfStream:
        break;
    }
    return DecodeError::unknownBlock;
}

std::optional<DecodeError> StreamLayout::read(std::span<const std::uint8_t> input, std::size_t maximumSize)
{
    m_blocks.clear();
    m_decodedSize = 0;
    std::size_t offset = 0;
    while (true) {
        std::span<const std::uint8_t> rest = input.subspan(offset);
        if (rest.size() < magicSize)
            return DecodeError::truncated;
        auto magic = static_cast<BlockMagic>(ByteOrder::load32(rest.data()));
        if (magic == BlockMagic::endOfStream)
            return std::nullopt;
        Measured block;
        if (auto error = measure(rest, block))
            return error;
        if (block.size > rest.size())
            return DecodeError::truncated;
        if (block.rawBytes > maximumSize - m_decodedSize)
            return DecodeError::tooLarge;
        m_blocks.push_back({ magic, offset, static_cast<std::size_t>(block.size), block.rawBytes });
        m_decodedSize += block.rawBytes;
        offset += static_cast<std::size_t>(block.size);
    }
}

}
