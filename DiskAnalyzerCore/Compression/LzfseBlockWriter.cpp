#include "Compression/LzfseBlockWriter.hpp"

#include "Compression/BitWriter.hpp"
#include "Compression/LzfseBlockHeader.hpp"

namespace tarnwick {

using namespace LzfseFormat;

namespace {

// Headroom the reference encoder keeps below the per-block limits; matching it keeps block
// boundaries, and so compressed sizes, comparable.
constexpr std::size_t tripleHeadroom = 8;
constexpr std::size_t literalHeadroom = 16;

// Worst cases in bits: a literal quad codes 4 x 10 bits; a triple 14 + 17 + 23.
constexpr std::size_t bitsPerLiteral = 10;
constexpr std::size_t bitsPerTriple = 54;

template<std::size_t symbols>
void fitTable(const std::array<std::uint32_t, symbols>& counts, std::uint32_t stateCount, std::span<std::uint16_t> frequencies,
    std::array<FiniteStateEntropy::EncoderEntry, symbols>& table)
{
    FiniteStateEntropy::normalize(counts, stateCount, frequencies);
    FiniteStateEntropy::buildEncoder(frequencies, stateCount, table);
}

}

LzfseBlockWriter::LzfseBlockWriter()
{
    m_triples.reserve(maxMatchesPerBlock);
    m_literals.reserve(maxLiteralsPerBlock);
    m_coded.reserve(maxMatchesPerBlock);
}

bool LzfseBlockWriter::tryPush(std::uint32_t l, std::uint32_t m, std::uint32_t d, const std::uint8_t* literals)
{
    if (m_triples.size() + 1 + tripleHeadroom > maxMatchesPerBlock || m_literals.size() + l + literalHeadroom > maxLiteralsPerBlock)
        return false;
    m_triples.push_back({ l, m, d });
    m_literals.insert(m_literals.end(), literals, literals + l);
    return true;
}

void LzfseBlockWriter::rollBack(Mark mark)
{
    m_triples.resize(mark.triples);
    m_literals.resize(mark.literals);
}

// A D equal to the previous triple's is stored as 0.
void LzfseBlockWriter::codeTriples()
{
    m_coded.clear();
    std::uint32_t previous = 0;
    for (Triple triple : m_triples) {
        std::uint32_t d = triple.d == previous ? 0 : triple.d;
        previous = triple.d;
        m_coded.push_back({ { triple.l, triple.m, d }, static_cast<std::uint8_t>(lSymbol(triple.l)),
            static_cast<std::uint8_t>(mSymbol(triple.m)), static_cast<std::uint8_t>(dSymbol(d)) });
    }
}

void LzfseBlockWriter::fitTables(LzfseBlockHeader& header)
{
    std::array<std::uint32_t, literalSymbols> literalCounts {};
    std::array<std::uint32_t, lSymbols> lCounts {};
    std::array<std::uint32_t, mSymbols> mCounts {};
    std::array<std::uint32_t, dSymbols> dCounts {};
    for (std::uint8_t literal : m_literals)
        ++literalCounts[literal];
    for (const CodedTriple& triple : m_coded) {
        ++lCounts[triple.lSymbol];
        ++mCounts[triple.mSymbol];
        ++dCounts[triple.dSymbol];
    }
    FrequencyTables& tables = header.frequencies;
    fitTable(literalCounts, literalStates, tables.literal(), m_literalTable);
    fitTable(lCounts, lStates, tables.l(), m_lTable);
    fitTable(mCounts, mStates, tables.m(), m_mTable);
    fitTable(dCounts, dStates, tables.d(), m_dTable);
}

// Literal i belongs to state i mod 4; the stream is written from the last quad to the first,
// so that the decoder reads it forwards.
std::vector<std::uint8_t> LzfseBlockWriter::encodeLiterals(LzfseBlockHeader& header) const
{
    BitWriter writer(bitsPerLiteral * m_literals.size());
    std::array<std::uint32_t, 4> states {};
    for (std::size_t i = m_literals.size(); i > 0; i -= 4) {
        FiniteStateEntropy::encode(states[3], m_literalTable[m_literals[i - 1]], writer);
        FiniteStateEntropy::encode(states[2], m_literalTable[m_literals[i - 2]], writer);
        FiniteStateEntropy::encode(states[1], m_literalTable[m_literals[i - 3]], writer);
        FiniteStateEntropy::encode(states[0], m_literalTable[m_literals[i - 4]], writer);
        writer.flush();
    }
    for (std::size_t i = 0; i < 4; ++i)
        header.literalStates[i] = static_cast<std::uint16_t>(states[i]);
    auto stream = std::move(writer).finish();
    header.literalPaddingBits = stream.paddingBits;
    return std::move(stream.bytes);
}

// Per triple, in reverse: D, M, L, each as extra bits then the symbol's state bits.
std::vector<std::uint8_t> LzfseBlockWriter::encodeTriples(LzfseBlockHeader& header) const
{
    BitWriter writer(bitsPerTriple * m_coded.size());
    std::uint32_t l = 0;
    std::uint32_t m = 0;
    std::uint32_t d = 0;
    for (auto triple = m_coded.rbegin(); triple != m_coded.rend(); ++triple) {
        writer.write(triple->values.d - dBase[triple->dSymbol], dExtraBits[triple->dSymbol]);
        FiniteStateEntropy::encode(d, m_dTable[triple->dSymbol], writer);
        writer.write(triple->values.m - mBase[triple->mSymbol], mExtraBits[triple->mSymbol]);
        FiniteStateEntropy::encode(m, m_mTable[triple->mSymbol], writer);
        writer.write(triple->values.l - lBase[triple->lSymbol], lExtraBits[triple->lSymbol]);
        FiniteStateEntropy::encode(l, m_lTable[triple->lSymbol], writer);
        writer.flush();
    }
    header.lState = static_cast<std::uint16_t>(l);
    header.mState = static_cast<std::uint16_t>(m);
    header.dState = static_cast<std::uint16_t>(d);
    auto stream = std::move(writer).finish();
    header.lmdPaddingBits = stream.paddingBits;
    return std::move(stream.bytes);
}

void LzfseBlockWriter::writeBlock(std::vector<std::uint8_t>& output)
{
    LzfseBlockHeader header;
    header.rawBytes = static_cast<std::uint32_t>(m_literals.size());
    for (Triple triple : m_triples)
        header.rawBytes += triple.m;
    m_literals.resize((m_literals.size() + 3) & ~std::size_t { 3 }, 0);
    codeTriples();
    fitTables(header);
    std::vector<std::uint8_t> literalStream = encodeLiterals(header);
    std::vector<std::uint8_t> tripleStream = encodeTriples(header);
    header.literalCount = static_cast<std::uint32_t>(m_literals.size());
    header.matchCount = static_cast<std::uint32_t>(m_coded.size());
    header.literalPayloadBytes = static_cast<std::uint32_t>(literalStream.size());
    header.lmdPayloadBytes = static_cast<std::uint32_t>(lmdPrefixSize + tripleStream.size());
    header.writeV2(output);
    output.insert(output.end(), literalStream.begin(), literalStream.end());
    output.insert(output.end(), lmdPrefixSize, 0);
    output.insert(output.end(), tripleStream.begin(), tripleStream.end());
    m_triples.clear();
    m_literals.clear();
}

}
