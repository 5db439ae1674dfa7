#include "Compression/LzfseStreamEncoder.hpp"

#include "Compression/ByteOrder.hpp"
#include "Compression/LzfseEncoder.hpp"
#include "Compression/LzfseFormat.hpp"
#include "Compression/LzvnEncoder.hpp"

#include <algorithm>
#include <cassert>
#include <limits>

namespace tarnwick::LzfseStreamEncoder {

using namespace LzfseFormat;

namespace {

constexpr std::size_t largestRawBlock = std::numeric_limits<std::uint32_t>::max();

void appendWord(std::vector<std::uint8_t>& output, std::uint32_t word)
{
    std::size_t at = output.size();
    output.resize(at + 4);
    ByteOrder::store32(output.data() + at, word);
}

void appendMagic(std::vector<std::uint8_t>& output, BlockMagic magic) { appendWord(output, static_cast<std::uint32_t>(magic)); }

// "bvx-", the byte count, the bytes; more than one block only past 4 GiB.
std::vector<std::uint8_t> uncompressedStream(std::span<const std::uint8_t> input)
{
    std::vector<std::uint8_t> output;
    output.reserve(input.size() + 2 * uncompressedHeaderSize + magicSize);
    do {
        std::span<const std::uint8_t> chunk = input.first(std::min(input.size(), largestRawBlock));
        appendMagic(output, BlockMagic::uncompressed);
        appendWord(output, static_cast<std::uint32_t>(chunk.size()));
        output.insert(output.end(), chunk.begin(), chunk.end());
        input = input.subspan(chunk.size());
    } while (!input.empty());
    appendMagic(output, BlockMagic::endOfStream);
    return output;
}

// "bvxn", the byte count, the payload size, the payload.
std::vector<std::uint8_t> lzvnStream(std::span<const std::uint8_t> input, const std::vector<std::uint8_t>& payload)
{
    assert(input.size() <= std::numeric_limits<std::uint32_t>::max() && "one LZVN block holds less than 4 GiB");
    std::vector<std::uint8_t> output;
    output.reserve(payload.size() + lzvnHeaderSize + magicSize);
    appendMagic(output, BlockMagic::lzvn);
    appendWord(output, static_cast<std::uint32_t>(input.size()));
    appendWord(output, static_cast<std::uint32_t>(payload.size()));
    output.insert(output.end(), payload.begin(), payload.end());
    appendMagic(output, BlockMagic::endOfStream);
    return output;
}

std::vector<std::uint8_t> entropyCodedStream(std::span<const std::uint8_t> input)
{
    std::vector<std::uint8_t> output;
    output.reserve(input.size() / 2 + 1024);
    LzfseEncoder().encode(input, output);
    appendMagic(output, BlockMagic::endOfStream);
    return output;
}

std::vector<std::uint8_t> chooseStream(std::span<const std::uint8_t> input)
{
    if (input.size() < smallestCompressedInput)
        return uncompressedStream(input);
    if (input.size() < smallestEntropyCodedInput) {
        // Framing is left out of the comparison, as the reference encoder does.
        std::vector<std::uint8_t> payload = LzvnEncoder().encode(input);
        return payload.size() < input.size() ? lzvnStream(input, payload) : uncompressedStream(input);
    }
    std::vector<std::uint8_t> stream = entropyCodedStream(input);
    if (stream.size() < input.size() + uncompressedHeaderSize + magicSize)
        return stream;
    return uncompressedStream(input);
}

}

std::vector<std::uint8_t> encode(std::span<const std::uint8_t> input, BlockKind kind)
{
    switch (kind) {
    case BlockKind::uncompressed:
        return uncompressedStream(input);
    case BlockKind::lzvn:
        return lzvnStream(input, LzvnEncoder().encode(input));
    case BlockKind::entropyCoded:
        return entropyCodedStream(input);
    case BlockKind::automatic:
        break;
    }
    return chooseStream(input);
}

}
