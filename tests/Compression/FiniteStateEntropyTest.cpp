#include "Compression/FiniteStateEntropy.hpp"
#include "Compression/FrequencyTables.hpp"
#include "LzfseTestData.hpp"

#include <gtest/gtest.h>

#include <numeric>

using namespace tarnwick;
using namespace tarnwick::FiniteStateEntropy;

// N = 16, frequencies 5, 0, 8, 3: each symbol's states tile [0, 16) with their next-state ranges.
TEST(FiniteStateEntropy, DecoderTableOfSmallExample)
{
    std::array<std::uint16_t, 4> frequencies { 5, 0, 8, 3 };
    std::array<DecoderEntry, 16> table;
    buildDecoder(frequencies, table);
    struct Expected {
        std::uint8_t symbol, bitCount;
        std::int16_t delta;
    };
    const Expected expected[16] = { { 0, 2, 4 }, { 0, 2, 8 }, { 0, 2, 12 }, { 0, 1, 0 }, { 0, 1, 2 }, { 2, 1, 0 }, { 2, 1, 2 },
        { 2, 1, 4 }, { 2, 1, 6 }, { 2, 1, 8 }, { 2, 1, 10 }, { 2, 1, 12 }, { 2, 1, 14 }, { 3, 3, 8 }, { 3, 2, 0 }, { 3, 2, 4 } };
    for (std::size_t state = 0; state < 16; ++state) {
        EXPECT_EQ(table[state].symbol, expected[state].symbol) << "state " << state;
        EXPECT_EQ(table[state].bitCount, expected[state].bitCount) << "state " << state;
        EXPECT_EQ(table[state].delta, expected[state].delta) << "state " << state;
    }
}

TEST(FiniteStateEntropy, EncoderTableOfSmallExample)
{
    std::array<std::uint16_t, 4> frequencies { 5, 0, 8, 3 };
    std::array<EncoderEntry, 4> table;
    buildEncoder(frequencies, 16, table);
    EXPECT_EQ((std::array { table[0].threshold, table[0].shift, table[0].delta0, table[0].delta1 }), (std::array<std::int16_t, 4> { 4, 2, -1, 3 }));
    EXPECT_EQ((std::array { table[2].threshold, table[2].shift, table[2].delta0 }), (std::array<std::int16_t, 3> { 0, 1, 5 }));
    EXPECT_EQ((std::array { table[3].threshold, table[3].shift, table[3].delta0, table[3].delta1 }), (std::array<std::int16_t, 4> { 8, 3, 12, 14 }));
}

// Symbols written backwards through the encoder table come out forwards through the decoder's.
TEST(FiniteStateEntropy, EncodedSymbolsDecodeBack)
{
    std::vector<std::uint8_t> symbols = LzfseTestData::recordLike(4000, 8);
    std::array<std::uint32_t, 256> counts {};
    for (std::uint8_t symbol : symbols)
        ++counts[symbol];
    std::array<std::uint16_t, 256> frequencies;
    normalize(counts, 1024, frequencies);
    std::array<EncoderEntry, 256> encoder;
    std::array<DecoderEntry, 1024> decoder;
    buildEncoder(frequencies, 1024, encoder);
    buildDecoder(frequencies, decoder);

    BitWriter writer(10 * symbols.size());
    std::uint32_t state = 0;
    for (auto symbol = symbols.rbegin(); symbol != symbols.rend(); ++symbol) {
        encode(state, encoder[*symbol], writer);
        writer.flush();
    }
    auto stream = std::move(writer).finish();
    BackwardBitReader reader(stream.bytes, 8 * static_cast<std::int64_t>(stream.bytes.size()) - stream.paddingBits);
    for (std::size_t i = 0; i < symbols.size(); ++i) {
        reader.refill();
        ASSERT_EQ(FiniteStateEntropy::decode(state, decoder.data(), reader), symbols[i]) << "symbol " << i;
    }
    EXPECT_FALSE(reader.overran());
    EXPECT_EQ(state, 0u) << "the decoder ends in the encoder's starting state";
}

struct Histogram {
    const char* name;
    std::vector<std::uint32_t> counts;
    std::uint32_t states;
};

class Normalization : public testing::TestWithParam<Histogram> { };

// Any histogram: the frequencies fill the table exactly and keep every counted symbol.
TEST_P(Normalization, SumsToStateCountAndKeepsEverySymbol)
{
    const Histogram& histogram = GetParam();
    std::vector<std::uint16_t> frequencies(histogram.counts.size());
    normalize(histogram.counts, histogram.states, frequencies);
    EXPECT_EQ(sum(frequencies), histogram.states);
    bool empty = std::accumulate(histogram.counts.begin(), histogram.counts.end(), 0u) == 0;
    for (std::size_t symbol = 0; symbol < frequencies.size(); ++symbol) {
        if (histogram.counts[symbol] > 0) {
            EXPECT_GE(frequencies[symbol], 1) << "symbol " << symbol;
        } else if (!empty || symbol > 0) {
            EXPECT_EQ(frequencies[symbol], 0) << "symbol " << symbol;
        }
    }
}

std::vector<std::uint32_t> countsOf(std::size_t symbols, std::uint32_t common, std::uint32_t rare, std::size_t commonSymbols)
{
    std::vector<std::uint32_t> counts(symbols, rare);
    for (std::size_t i = 0; i < commonSymbols; ++i)
        counts[i * 7 % symbols] = common;
    return counts;
}

INSTANTIATE_TEST_SUITE_P(Histograms, Normalization,
    testing::Values(Histogram { "nothing", std::vector<std::uint32_t>(256, 0), 1024 }, // all states to symbol 0
        Histogram { "one symbol", countsOf(20, 10000, 0, 1), 64 },
        Histogram { "uniform", std::vector<std::uint32_t>(256, 150), 1024 },
        Histogram { "one dominant, many rare", countsOf(256, 40000, 1, 1), 1024 }, // rounding over-allocates
        Histogram { "every symbol rare", countsOf(64, 1, 1, 0), 256 },
        Histogram { "skewed lengths", std::vector<std::uint32_t> { 9000, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 300 }, 64 },
        Histogram { "two halves", countsOf(64, 5000, 0, 32), 256 }),
    LzfseTestData::caseName);

// From the 64 KiB-of-zeros block: L frequencies 60, 2, 0, 2 pack into 4f 42 08.
TEST(FrequencyTables, PacksLikeTheReferenceHeader)
{
    FrequencyTables tables;
    tables.l()[0] = 60;
    tables.l()[1] = 2;
    tables.l()[3] = 2;
    std::vector<std::uint8_t> bytes;
    tables.pack(bytes);
    ASSERT_GE(bytes.size(), 3u);
    EXPECT_EQ(bytes[0], 0x4f);
    EXPECT_EQ(bytes[1], 0x42);
    EXPECT_EQ(bytes[2], 0x08);
}

TEST(FrequencyTables, UnpackReadsWhatPackWrote)
{
    FrequencyTables tables;
    for (std::size_t i = 0; i < tables.values.size(); ++i)
        tables.values[i] = static_cast<std::uint16_t>((i * 37) % 1048); // every code width
    std::vector<std::uint8_t> bytes;
    tables.pack(bytes);
    auto unpacked = FrequencyTables::unpack(bytes);
    ASSERT_TRUE(unpacked.has_value());
    EXPECT_EQ(unpacked->values, tables.values);

    EXPECT_FALSE(FrequencyTables::unpack(std::span(bytes).first(bytes.size() - 1))) << "a code cut off";
    bytes.push_back(0);
    EXPECT_FALSE(FrequencyTables::unpack(bytes)) << "a whole unread byte";
}
