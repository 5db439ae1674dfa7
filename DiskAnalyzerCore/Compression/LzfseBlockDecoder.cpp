#include "Compression/LzfseBlockDecoder.hpp"

#include "Compression/BackwardBitReader.hpp"
#include "Compression/LzfseBlockHeader.hpp"

namespace tarnwick {

using namespace LzfseFormat;
using Lzfse::DecodeError;

namespace {

// The padding bits above the last meaningful bit must be zero.
std::optional<BackwardBitReader> openStream(std::span<const std::uint8_t> payload, std::uint32_t paddingBits)
{
    if (paddingBits > 0 && (payload.empty() || (payload.back() >> (8 - paddingBits)) != 0))
        return std::nullopt;
    return BackwardBitReader(payload, 8 * static_cast<std::int64_t>(payload.size()) - paddingBits);
}

}

void LzfseBlockDecoder::buildTables(const LzfseBlockHeader& header)
{
    const FrequencyTables& tables = header.frequencies;
    if (header.literalCount > 0)
        FiniteStateEntropy::buildDecoder(tables.literal(), m_literalTable);
    if (header.matchCount > 0) {
        FiniteStateEntropy::buildValueDecoder(tables.l(), lExtraBits, lBase, m_lTable);
        FiniteStateEntropy::buildValueDecoder(tables.m(), mExtraBits, mBase, m_mTable);
        FiniteStateEntropy::buildValueDecoder(tables.d(), dExtraBits, dBase, m_dTable);
    }
}

std::optional<DecodeError> LzfseBlockDecoder::decode(std::span<const std::uint8_t> block, std::span<std::uint8_t> output, std::size_t position)
{
    auto header = LzfseBlockHeader::parse(block);
    if (!header)
        return DecodeError::damagedHeader;
    if (output.size() - position != header->rawBytes)
        return DecodeError::damagedHeader;
    buildTables(*header);
    auto literalPayload = block.subspan(header->headerBytes, header->literalPayloadBytes);
    auto lmdPayload = block.subspan(header->headerBytes + header->literalPayloadBytes, header->lmdPayloadBytes);
    if (!decodeLiterals(*header, literalPayload) || !executeTriples(*header, lmdPayload, output, position))
        return DecodeError::damagedData;
    return std::nullopt;
}

// Four interleaved states share one table and one stream: literal i uses state i mod 4.
bool LzfseBlockDecoder::decodeLiterals(const LzfseBlockHeader& header, std::span<const std::uint8_t> payload)
{
    auto reader = openStream(payload, header.literalPaddingBits);
    if (!reader)
        return false;
    std::array<std::uint32_t, 4> states { header.literalStates[0], header.literalStates[1], header.literalStates[2], header.literalStates[3] };
    const FiniteStateEntropy::DecoderEntry* table = m_literalTable.data();
    for (std::uint32_t i = 0; i < header.literalCount; i += 4) {
        reader->refill();
        m_literals[i] = FiniteStateEntropy::decode(states[0], table, *reader);
        m_literals[i + 1] = FiniteStateEntropy::decode(states[1], table, *reader);
        m_literals[i + 2] = FiniteStateEntropy::decode(states[2], table, *reader);
        m_literals[i + 3] = FiniteStateEntropy::decode(states[3], table, *reader);
    }
    return !reader->overran();
}

// Each triple copies L literals, then M bytes from D back; a coded D of 0 repeats the
// previous triple's D, which a block's first triple does not have.
bool LzfseBlockDecoder::executeTriples(const LzfseBlockHeader& header, std::span<const std::uint8_t> payload,
    std::span<std::uint8_t> output, std::size_t position)
{
    auto reader = openStream(payload, header.lmdPaddingBits);
    if (!reader)
        return false;
    TripleStates states { header.lState, header.mState, header.dState };
    const std::uint8_t* literal = m_literals.data();
    const std::uint8_t* literalEnd = literal + header.literalCount;
    std::uint8_t* const outputStart = output.data();
    std::uint8_t* const outputEnd = outputStart + output.size();
    std::uint8_t* out = outputStart + position;
    std::size_t distance = 0;
    for (std::uint32_t triple = 0; triple < header.matchCount; ++triple) {
        reader->refill();
        std::size_t l = FiniteStateEntropy::decodeValue(states.l, m_lTable.data(), *reader);
        std::size_t m = FiniteStateEntropy::decodeValue(states.m, m_mTable.data(), *reader);
        std::size_t d = FiniteStateEntropy::decodeValue(states.d, m_dTable.data(), *reader);
        distance = d != 0 ? d : distance;
        std::size_t room = static_cast<std::size_t>(outputEnd - out);
        if (l > static_cast<std::size_t>(literalEnd - literal) || l + m > room) [[unlikely]]
            return false;
        MatchCopy::copyLiterals(out, literal, l, room);
        out += l;
        literal += l;
        if (distance == 0 || distance > static_cast<std::size_t>(out - outputStart)) [[unlikely]]
            return false;
        MatchCopy::copyMatch(out, distance, m, room - l);
        out += m;
    }
    return out == outputEnd && !reader->overran();
}

}
