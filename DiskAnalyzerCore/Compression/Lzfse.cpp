#include "Compression/Lzfse.hpp"

#include "Compression/LzfseStreamDecoder.hpp"
#include "Compression/LzfseStreamEncoder.hpp"

namespace tarnwick::Lzfse {

std::vector<std::uint8_t> encode(std::span<const std::uint8_t> input) { return LzfseStreamEncoder::encode(input); }

std::expected<std::vector<std::uint8_t>, DecodeError> decode(std::span<const std::uint8_t> input, std::size_t maximumSize)
{
    std::vector<std::uint8_t> output;
    if (auto error = LzfseStreamDecoder::decode(input, maximumSize, output))
        return std::unexpected(*error);
    return output;
}

}
