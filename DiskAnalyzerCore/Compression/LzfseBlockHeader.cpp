#include "Compression/LzfseBlockHeader.hpp"

#include "Compression/ByteOrder.hpp"
#include "Compression/FiniteStateEntropy.hpp"
#include "Compression/LzfseFormat.hpp"

namespace tarnwick {

using namespace LzfseFormat;

namespace {

constexpr std::uint32_t field(std::uint64_t word, unsigned first, unsigned width)
{
    return static_cast<std::uint32_t>((word >> first) & ((std::uint64_t { 1 } << width) - 1));
}

constexpr std::uint64_t placed(std::uint64_t value, unsigned first) { return value << first; }

std::optional<LzfseBlockHeader> parseV2Fields(std::span<const std::uint8_t> block)
{
    std::uint64_t word0 = ByteOrder::load64(block.data() + 8);
    std::uint64_t word1 = ByteOrder::load64(block.data() + 16);
    std::uint64_t word2 = ByteOrder::load64(block.data() + 24);
    LzfseBlockHeader header;
    header.rawBytes = ByteOrder::load32(block.data() + 4);
    header.literalCount = field(word0, 0, 20);
    header.literalPayloadBytes = field(word0, 20, 20);
    header.matchCount = field(word0, 40, 20);
    header.literalPaddingBits = 7 - field(word0, 60, 3);
    for (unsigned i = 0; i < 4; ++i)
        header.literalStates[i] = static_cast<std::uint16_t>(field(word1, 10 * i, 10));
    header.lmdPayloadBytes = field(word1, 40, 20);
    header.lmdPaddingBits = 7 - field(word1, 60, 3);
    header.headerBytes = field(word2, 0, 32);
    header.lState = static_cast<std::uint16_t>(field(word2, 32, 10));
    header.mState = static_cast<std::uint16_t>(field(word2, 42, 10));
    header.dState = static_cast<std::uint16_t>(field(word2, 52, 10));
    if (header.headerBytes < v2FixedHeaderSize || header.headerBytes > block.size())
        return std::nullopt;
    if (header.headerBytes > v2FixedHeaderSize) {
        auto tables = FrequencyTables::unpack(block.subspan(v2FixedHeaderSize, header.headerBytes - v2FixedHeaderSize));
        if (!tables)
            return std::nullopt;
        header.frequencies = *tables;
    }
    return header;
}

std::optional<LzfseBlockHeader> parseV1Fields(std::span<const std::uint8_t> block)
{
    if (block.size() < v1HeaderSize)
        return std::nullopt;
    const std::uint8_t* bytes = block.data();
    auto literalBits = static_cast<std::int32_t>(ByteOrder::load32(bytes + 28));
    auto lmdBits = static_cast<std::int32_t>(ByteOrder::load32(bytes + 40));
    if (literalBits < -7 || literalBits > 0 || lmdBits < -7 || lmdBits > 0)
        return std::nullopt;
    LzfseBlockHeader header;
    header.rawBytes = ByteOrder::load32(bytes + 4);
    header.literalCount = ByteOrder::load32(bytes + 12);
    header.matchCount = ByteOrder::load32(bytes + 16);
    header.literalPayloadBytes = ByteOrder::load32(bytes + 20);
    header.lmdPayloadBytes = ByteOrder::load32(bytes + 24);
    header.literalPaddingBits = static_cast<std::uint32_t>(-literalBits);
    header.lmdPaddingBits = static_cast<std::uint32_t>(-lmdBits);
    for (unsigned i = 0; i < 4; ++i)
        header.literalStates[i] = ByteOrder::load16(bytes + 32 + 2 * i);
    header.lState = ByteOrder::load16(bytes + 44);
    header.mState = ByteOrder::load16(bytes + 46);
    header.dState = ByteOrder::load16(bytes + 48);
    header.headerBytes = v1HeaderSize;
    header.frequencies = FrequencyTables::readPlain(block.subspan<50, 2 * frequencyCount>());
    return header;
}

// An all-zero table is only acceptable for a stream that never uses it; any other table must
// own every state exactly once.
bool tableFits(std::span<const std::uint16_t> frequencies, std::uint32_t stateCount, bool used)
{
    std::uint32_t total = FiniteStateEntropy::sum(frequencies);
    return total == stateCount || (total == 0 && !used);
}

bool countsValid(const LzfseBlockHeader& header)
{
    return header.literalCount <= maxLiteralsPerBlock && header.literalCount % 4 == 0
        && header.matchCount <= maxMatchesPerBlock
        && std::uint64_t { header.rawBytes } <= header.literalCount + std::uint64_t { header.matchCount } * maxMValue;
}

bool statesValid(const LzfseBlockHeader& header)
{
    for (std::uint16_t state : header.literalStates) {
        if (state >= literalStates)
            return false;
    }
    return header.lState < lStates && header.mState < mStates && header.dState < dStates;
}

bool tablesValid(const LzfseBlockHeader& header)
{
    const FrequencyTables& tables = header.frequencies;
    bool triples = header.matchCount > 0;
    return tableFits(tables.literal(), literalStates, header.literalCount > 0) && tableFits(tables.l(), lStates, triples)
        && tableFits(tables.m(), mStates, triples) && tableFits(tables.d(), dStates, triples);
}

// The L/M/D payload always carries its 8-byte zero prefix; 7 bytes are enough when the last
// byte has no padding, since then the prefix's top byte is never looked at.
bool payloadsValid(const LzfseBlockHeader& header, std::size_t blockSize)
{
    std::uint64_t total = std::uint64_t { header.headerBytes } + header.literalPayloadBytes + header.lmdPayloadBytes;
    std::uint32_t smallestLmd = header.lmdPaddingBits == 0 ? 7 : 8;
    return total == blockSize && header.lmdPayloadBytes >= smallestLmd;
}

}

std::optional<LzfseBlockHeader::Extent> LzfseBlockHeader::measure(std::span<const std::uint8_t> block)
{
    auto magic = static_cast<BlockMagic>(ByteOrder::load32(block.data()));
    if (magic == BlockMagic::lzfseV2) {
        if (block.size() < v2FixedHeaderSize)
            return std::nullopt;
        std::uint64_t word0 = ByteOrder::load64(block.data() + 8);
        std::uint64_t word1 = ByteOrder::load64(block.data() + 16);
        std::uint64_t word2 = ByteOrder::load64(block.data() + 24);
        std::uint32_t rawBytes = ByteOrder::load32(block.data() + 4);
        std::uint64_t most = field(word0, 0, 20) + std::uint64_t { field(word0, 40, 20) } * maxMValue;
        return Extent { std::uint64_t { field(word2, 0, 32) } + field(word0, 20, 20) + field(word1, 40, 20), rawBytes, rawBytes <= most };
    }
    if (block.size() < 28)
        return std::nullopt;
    std::uint32_t rawBytes = ByteOrder::load32(block.data() + 4);
    std::uint64_t most = ByteOrder::load32(block.data() + 12) + std::uint64_t { ByteOrder::load32(block.data() + 16) } * maxMValue;
    std::uint64_t payloads = std::uint64_t { ByteOrder::load32(block.data() + 20) } + ByteOrder::load32(block.data() + 24);
    return Extent { v1HeaderSize + payloads, rawBytes, rawBytes <= most };
}

std::optional<LzfseBlockHeader> LzfseBlockHeader::parse(std::span<const std::uint8_t> block)
{
    if (block.size() < v2FixedHeaderSize)
        return std::nullopt;
    auto magic = static_cast<BlockMagic>(ByteOrder::load32(block.data()));
    auto header = magic == BlockMagic::lzfseV2 ? parseV2Fields(block) : parseV1Fields(block);
    if (!header || !countsValid(*header) || !statesValid(*header) || !tablesValid(*header) || !payloadsValid(*header, block.size()))
        return std::nullopt;
    return header;
}

void LzfseBlockHeader::writeV2(std::vector<std::uint8_t>& output) const
{
    std::size_t start = output.size();
    output.resize(start + v2FixedHeaderSize);
    frequencies.pack(output);
    std::uint64_t headerSize = output.size() - start;
    std::uint8_t* bytes = output.data() + start;
    ByteOrder::store32(bytes, static_cast<std::uint32_t>(BlockMagic::lzfseV2));
    ByteOrder::store32(bytes + 4, rawBytes);
    ByteOrder::store64(bytes + 8, placed(literalCount, 0) | placed(literalPayloadBytes, 20) | placed(matchCount, 40)
            | placed(7 - literalPaddingBits, 60));
    ByteOrder::store64(bytes + 16, placed(literalStates[0], 0) | placed(literalStates[1], 10) | placed(literalStates[2], 20)
            | placed(literalStates[3], 30) | placed(lmdPayloadBytes, 40) | placed(7 - lmdPaddingBits, 60));
    ByteOrder::store64(bytes + 24, placed(headerSize, 0) | placed(lState, 32) | placed(mState, 42) | placed(dState, 52));
}

}
