#pragma once

#include "Compression/FiniteStateEntropy.hpp"
#include "Compression/LzfseFormat.hpp"

#include <array>
#include <cstdint>
#include <vector>

namespace tarnwick {

struct LzfseBlockHeader;

// The encoder's back end: collects one block's (L, M, D) triples with their literals, then
// writes them as a bvx2 block with tables fitted to exactly that block.
class LzfseBlockWriter {
public:
    LzfseBlockWriter();

    // Adds a triple whose L literals start at `literals`. Returns false, changing nothing, when
    // the block has no room left for it.
    bool tryPush(std::uint32_t l, std::uint32_t m, std::uint32_t d, const std::uint8_t* literals);

    struct Mark {
        std::size_t triples = 0;
        std::size_t literals = 0;
    };
    [[nodiscard]] Mark mark() const { return { m_triples.size(), m_literals.size() }; }
    void rollBack(Mark mark);
    [[nodiscard]] bool empty() const { return m_triples.empty(); }

    // Appends the collected block to `output` and starts an empty one.
    void writeBlock(std::vector<std::uint8_t>& output);

private:
    struct Triple {
        std::uint32_t l;
        std::uint32_t m;
        std::uint32_t d;
    };
    // A triple as stored: D after the previous-distance substitution, with the symbols.
    struct CodedTriple {
        Triple values;
        std::uint8_t lSymbol;
        std::uint8_t mSymbol;
        std::uint8_t dSymbol;
    };

    void codeTriples();
    void fitTables(LzfseBlockHeader& header);
    std::vector<std::uint8_t> encodeLiterals(LzfseBlockHeader& header) const;
    std::vector<std::uint8_t> encodeTriples(LzfseBlockHeader& header) const;

    std::vector<Triple> m_triples;
    std::vector<std::uint8_t> m_literals;
    std::vector<CodedTriple> m_coded;
    std::array<FiniteStateEntropy::EncoderEntry, LzfseFormat::literalSymbols> m_literalTable;
    std::array<FiniteStateEntropy::EncoderEntry, LzfseFormat::lSymbols> m_lTable;
    std::array<FiniteStateEntropy::EncoderEntry, LzfseFormat::mSymbols> m_mTable;
    std::array<FiniteStateEntropy::EncoderEntry, LzfseFormat::dSymbols> m_dTable;
};

}
