#include "Compression/LzfseStreamDecoder.hpp"

#include "Compression/LzfseBlockDecoder.hpp"
#include "Compression/LzvnDecoder.hpp"
#include "Compression/StreamLayout.hpp"

#include <cstring>
#include <memory>

namespace tarnwick::LzfseStreamDecoder {

using namespace LzfseFormat;
using Lzfse::DecodeError;

namespace {

class BlockDecoders {
public:
    std::optional<DecodeError> decode(const StreamLayout::Block& block, std::span<const std::uint8_t> bytes,
        std::span<std::uint8_t> output, std::size_t position)
    {
        switch (block.magic) {
        case BlockMagic::uncompressed:
            if (block.rawBytes > 0)
                std::memcpy(output.data() + position, bytes.data() + uncompressedHeaderSize, block.rawBytes);
            return std::nullopt;
        case BlockMagic::lzvn:
            return LzvnDecoder::decode(bytes.subspan(lzvnHeaderSize), output, position);
        case BlockMagic::lzfseV1:
        case BlockMagic::lzfseV2:
            if (!m_lzfse)
                m_lzfse = std::make_unique<LzfseBlockDecoder>();
            return m_lzfse->decode(bytes, output, position);
        case BlockMagic::endOfStream:
            break;
        }
        return DecodeError::unknownBlock;
    }

private:
    std::unique_ptr<LzfseBlockDecoder> m_lzfse; // about 48 KB of tables and literals, made on first use
};

}

std::optional<DecodeError> decode(std::span<const std::uint8_t> input, std::size_t maximumSize, std::vector<std::uint8_t>& output)
{
    StreamLayout layout;
    if (auto error = layout.read(input, maximumSize))
        return error;
    output.assign(layout.decodedSize(), 0);
    BlockDecoders decoders;
    std::size_t position = 0;
    for (const StreamLayout::Block& block : layout.blocks()) {
        std::span<std::uint8_t> window(output.data(), position + block.rawBytes);
        if (auto error = decoders.decode(block, input.subspan(block.offset, block.size), window, position))
            return error;
        position += block.rawBytes;
    }
    return std::nullopt;
}

}
