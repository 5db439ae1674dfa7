#include "Compression/Lzfse.hpp"
#include "Compression/LzfseStreamDecoder.hpp"
#include "Compression/LzfseStreamEncoder.hpp"
#include "LzfseTestData.hpp"

#include <gtest/gtest.h>

#include <functional>

using namespace tarnwick;
using LzfseFormat::BlockMagic;
using LzfseStreamEncoder::BlockKind;

namespace {

std::vector<std::uint8_t> text(std::size_t count)
{
    std::string sentence = "The quick brown fox jumps over the lazy dog; the dog sleeps on. ";
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; bytes.size() < count; ++i)
        bytes.insert(bytes.end(), sentence.begin(), sentence.end()), bytes.push_back(static_cast<std::uint8_t>('0' + i % 10));
    bytes.resize(count);
    return bytes;
}

// A random unit repeated: matches at a fixed distance, long enough to be split many times.
std::vector<std::uint8_t> repeated(std::size_t unit, std::size_t count)
{
    std::vector<std::uint8_t> pattern = LzfseTestData::randomBytes(unit, 7);
    std::vector<std::uint8_t> bytes(count);
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = pattern[i % unit];
    return bytes;
}

// Random data whose only repeats lie exactly at `distance`, the format's limits either side.
std::vector<std::uint8_t> echoAt(std::size_t distance)
{
    constexpr std::ptrdiff_t echo = 20000;
    std::vector<std::uint8_t> bytes = LzfseTestData::randomBytes(distance + echo, 11);
    std::copy(bytes.begin(), bytes.begin() + echo, bytes.begin() + static_cast<std::ptrdiff_t>(distance));
    return bytes;
}

std::vector<std::uint8_t> runsAndNoise(std::size_t count)
{
    std::vector<std::uint8_t> noise = LzfseTestData::randomBytes(count, 5);
    std::vector<std::uint8_t> bytes(count);
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = (i / 997) % 3 == 0 ? noise[i] : static_cast<std::uint8_t>(i / 997);
    return bytes;
}

struct Input {
    const char* name;
    std::function<std::vector<std::uint8_t>()> make;
    BlockMagic chosen; // what the automatic choice should produce
};

const Input inputs[] = {
    { "empty", [] { return std::vector<std::uint8_t> {}; }, BlockMagic::uncompressed },
    { "one byte", [] { return std::vector<std::uint8_t> { 'A' }; }, BlockMagic::uncompressed },
    { "seven bytes", [] { return text(7); }, BlockMagic::uncompressed },
    { "eight equal bytes", [] { return std::vector<std::uint8_t>(8, 'x'); }, BlockMagic::uncompressed },
    { "32 equal bytes", [] { return std::vector<std::uint8_t>(32, 'x'); }, BlockMagic::lzvn },
    { "text 100", [] { return text(100); }, BlockMagic::lzvn },
    { "random 100", [] { return LzfseTestData::randomBytes(100, 1); }, BlockMagic::uncompressed },
    { "text 4095", [] { return text(4095); }, BlockMagic::lzvn },
    { "text 4096", [] { return text(4096); }, BlockMagic::lzfseV2 },
    { "records 4097", [] { return LzfseTestData::recordLike(4097, 2); }, BlockMagic::lzfseV2 },
    { "random 64 KiB", [] { return LzfseTestData::randomBytes(65536, 3); }, BlockMagic::uncompressed },
    { "zeros 600 KB", [] { return std::vector<std::uint8_t>(600'000, 0); }, BlockMagic::lzfseV2 },
    { "period 3 over 300 KB", [] { return repeated(3, 300'000); }, BlockMagic::lzfseV2 },
    { "period 1000 over 700 KB", [] { return repeated(1000, 700'000); }, BlockMagic::lzfseV2 },
    { "echo at the largest distance", [] { return echoAt(262139); }, BlockMagic::lzfseV2 },
    { "echo one byte too far", [] { return echoAt(262140); }, BlockMagic::uncompressed },
    { "runs and noise 400 KB", [] { return runsAndNoise(400'000); }, BlockMagic::lzfseV2 },
    { "records 3 MB", [] { return LzfseTestData::recordLike(3'000'000, 4); }, BlockMagic::lzfseV2 },
};

class LzfseRoundTrip : public testing::TestWithParam<Input> { };

std::vector<std::uint8_t> roundTrip(std::span<const std::uint8_t> encoded, std::size_t size)
{
    std::vector<std::uint8_t> decoded;
    auto error = LzfseStreamDecoder::decode(encoded, size, decoded);
    EXPECT_FALSE(error.has_value()) << Lzfse::message(*error);
    return decoded;
}

}

TEST_P(LzfseRoundTrip, ChosenEncodingDecodesBack)
{
    std::vector<std::uint8_t> input = GetParam().make();
    std::vector<std::uint8_t> encoded = Lzfse::encode(input);
    auto decoded = Lzfse::decode(encoded, input.size());
    ASSERT_TRUE(decoded.has_value()) << Lzfse::message(decoded.error());
    EXPECT_TRUE(*decoded == input);
    auto magics = LzfseTestData::blockMagics(encoded);
    ASSERT_FALSE(magics.empty());
    EXPECT_EQ(magics.front(), GetParam().chosen);
    if (GetParam().chosen == BlockMagic::uncompressed) {
        EXPECT_EQ(encoded.size(), input.size() + 12);
    }
}

TEST_P(LzfseRoundTrip, EveryBlockKindDecodesBack)
{
    std::vector<std::uint8_t> input = GetParam().make();
    for (BlockKind kind : { BlockKind::uncompressed, BlockKind::lzvn, BlockKind::entropyCoded }) {
        std::vector<std::uint8_t> encoded = LzfseStreamEncoder::encode(input, kind);
        EXPECT_TRUE(roundTrip(encoded, input.size()) == input) << "kind " << static_cast<int>(kind);
    }
}

TEST_P(LzfseRoundTrip, RefusesToGrowPastTheLimit)
{
    std::vector<std::uint8_t> input = GetParam().make();
    if (input.empty())
        GTEST_SKIP() << "nothing decodes to fewer than 0 bytes";
    auto decoded = Lzfse::decode(Lzfse::encode(input), input.size() - 1);
    ASSERT_FALSE(decoded.has_value());
    EXPECT_EQ(decoded.error(), Lzfse::DecodeError::tooLarge);
}

INSTANTIATE_TEST_SUITE_P(Generated, LzfseRoundTrip, testing::ValuesIn(inputs), LzfseTestData::caseName);

TEST(LzfseRoundTripBlocks, LargeInputsSpanSeveralBlocks)
{
    std::vector<std::uint8_t> input = LzfseTestData::recordLike(3'000'000, 4);
    auto magics = LzfseTestData::blockMagics(Lzfse::encode(input));
    EXPECT_GT(magics.size(), 5u);
    for (BlockMagic magic : magics)
        EXPECT_EQ(magic, BlockMagic::lzfseV2);
}

// Truncating a small stream of each kind at every byte gives an error, never a crash.
TEST(LzfseRoundTripBlocks, EveryTruncationOfOwnStreamsFails)
{
    std::vector<std::uint8_t> input = LzfseTestData::recordLike(5000, 9);
    for (BlockKind kind : { BlockKind::uncompressed, BlockKind::lzvn, BlockKind::entropyCoded }) {
        std::vector<std::uint8_t> encoded = LzfseStreamEncoder::encode(input, kind);
        for (std::size_t length = 0; length < encoded.size(); ++length) {
            std::vector<std::uint8_t> decoded;
            EXPECT_TRUE(LzfseStreamDecoder::decode(std::span(encoded).first(length), input.size(), decoded).has_value())
                << "kind " << static_cast<int>(kind) << " cut to " << length;
        }
    }
}
