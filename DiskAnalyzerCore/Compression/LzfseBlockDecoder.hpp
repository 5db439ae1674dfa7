#pragma once

#include "Compression/FiniteStateEntropy.hpp"
#include "Compression/LzfseDecodeError.hpp"
#include "Compression/LzfseFormat.hpp"
#include "Compression/MatchCopy.hpp"

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace tarnwick {

struct LzfseBlockHeader;

// Decodes entropy-coded blocks (bvx1, bvx2): first the whole literal buffer, then the
// (L, M, D) triples that interleave those literals with matches. Holds its tables and the
// literal buffer, so one instance serves every block of a stream.
class LzfseBlockDecoder {
public:
    // `block` holds the whole block. Output goes to output[position, output.size()), which the
    // block must fill exactly; matches may reach back to output[0].
    std::optional<Lzfse::DecodeError> decode(std::span<const std::uint8_t> block, std::span<std::uint8_t> output, std::size_t position);

private:
    struct TripleStates {
        std::uint32_t l;
        std::uint32_t m;
        std::uint32_t d;
    };

    void buildTables(const LzfseBlockHeader& header);
    bool decodeLiterals(const LzfseBlockHeader& header, std::span<const std::uint8_t> payload);
    bool executeTriples(const LzfseBlockHeader& header, std::span<const std::uint8_t> payload,
        std::span<std::uint8_t> output, std::size_t position);

    std::array<FiniteStateEntropy::DecoderEntry, LzfseFormat::literalStates> m_literalTable;
    std::array<FiniteStateEntropy::ValueDecoderEntry, LzfseFormat::lStates> m_lTable;
    std::array<FiniteStateEntropy::ValueDecoderEntry, LzfseFormat::mStates> m_mTable;
    std::array<FiniteStateEntropy::ValueDecoderEntry, LzfseFormat::dStates> m_dTable;
    // Room past the last literal lets literal runs be copied in whole chunks.
    std::array<std::uint8_t, LzfseFormat::maxLiteralsPerBlock + 4 * MatchCopy::slack> m_literals;
};

}
