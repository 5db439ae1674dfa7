#include "Compression/Lzfse.hpp"
#include "Compression/LzfseStreamEncoder.hpp"
#include "LzfseTestData.hpp"

#include <gtest/gtest.h>

#include <initializer_list>
#include <set>

using namespace tarnwick;
using Lzfse::DecodeError;

namespace {

using Bytes = std::vector<std::uint8_t>;

void appendWord(Bytes& bytes, std::uint32_t word)
{
    for (int i = 0; i < 4; ++i)
        bytes.push_back(static_cast<std::uint8_t>(word >> (8 * i)));
}

template<std::size_t size>
Bytes text(const char (&characters)[size])
{
    return Bytes(characters, characters + size - 1);
}

const Bytes endMarker = text("bvx$");

// A bvxn block of `payload` announcing `rawBytes`, then the end marker.
Bytes lzvnStream(std::uint32_t rawBytes, std::initializer_list<std::uint8_t> payload, bool withEndOpcode = true)
{
    Bytes stream = text("bvxn");
    appendWord(stream, rawBytes);
    appendWord(stream, static_cast<std::uint32_t>(payload.size() + (withEndOpcode ? 8 : 0)));
    stream.insert(stream.end(), payload);
    if (withEndOpcode) {
        stream.push_back(0x06);
        stream.insert(stream.end(), 7, 0);
    }
    stream.insert(stream.end(), endMarker.begin(), endMarker.end());
    return stream;
}

std::optional<DecodeError> errorOf(const Bytes& stream, std::size_t maximumSize = 1 << 20)
{
    auto decoded = Lzfse::decode(stream, maximumSize);
    return decoded ? std::nullopt : std::optional(decoded.error());
}

struct Case {
    const char* name;
    Bytes stream;
    std::optional<DecodeError> error; // empty: decodes
};

// A bvx2 header of zeros: it claims a 0-byte header and so a 0-byte block.
Bytes zeroSizedEntropyBlock()
{
    Bytes stream = text("bvx2");
    stream.resize(32, 0);
    stream.insert(stream.end(), endMarker.begin(), endMarker.end());
    return stream;
}

const Case cases[] = {
    { "empty input", {}, DecodeError::truncated },
    { "lone end marker", text("bvx$"), std::nullopt },
    { "bytes after the end marker", text("bvx$trailing"), std::nullopt },
    { "end marker cut short", text("bvx"), DecodeError::truncated },
    { "unknown magic", text("bvx9bvx$"), DecodeError::unknownBlock },
    { "raw block without end marker", text("bvx-\x03\0\0\0abc"), DecodeError::truncated },
    { "raw block shorter than announced", text("bvx-\x05\0\0\0abcbvx$"), DecodeError::truncated },
    { "lzvn header cut short", text("bvxn\x05\0\0"), DecodeError::truncated },
    { "lzvn literals", lzvnStream(3, { 0xE3, 'a', 'b', 'c' }), std::nullopt },
    { "lzvn nop between opcodes", lzvnStream(3, { 0x0E, 0xE3, 'a', 'b', 'c', 0x16 }), std::nullopt },
    { "lzvn small distance", lzvnStream(4, { 0x40, 0x01, 'z' }), std::nullopt }, // L 1 "z", M 3 at D 1
    { "lzvn distance zero", lzvnStream(4, { 0x40, 0x00, 'z' }), DecodeError::damagedData },
    { "lzvn distance before the start", lzvnStream(4, { 0x40, 0x02, 'z' }), DecodeError::damagedData },
    { "lzvn previous distance before any", lzvnStream(4, { 0x46, 'z' }), DecodeError::damagedData },
    { "lzvn match-only before any distance", lzvnStream(4, { 0xE1, 'z', 0xF3 }), DecodeError::damagedData },
    { "lzvn undefined opcode", lzvnStream(3, { 0x1E, 0xE3, 'a', 'b', 'c' }), DecodeError::damagedData },
    { "lzvn output shorter than announced", lzvnStream(5, { 0xE3, 'a', 'b', 'c' }), DecodeError::damagedData },
    { "lzvn output longer than announced", lzvnStream(2, { 0xE3, 'a', 'b', 'c' }), DecodeError::damagedData },
    { "lzvn without end opcode", lzvnStream(3, { 0xE3, 'a', 'b', 'c' }, false), DecodeError::damagedData },
    { "lzvn literals past the payload", lzvnStream(15, { 0xEF, 'a' }, false), DecodeError::damagedData },
    { "lzvn large distance cut off", lzvnStream(3, { 0x07, 0x01 }, false), DecodeError::damagedData },
    { "lzvn announcing impossible output", lzvnStream(100000, { 0xE1, 'a' }), DecodeError::damagedHeader },
    { "entropy block claiming no size", zeroSizedEntropyBlock(), DecodeError::damagedHeader },
};

class LzfseDecodeErrors : public testing::TestWithParam<Case> { };

}

TEST_P(LzfseDecodeErrors, HandBuiltStreams)
{
    EXPECT_EQ(errorOf(GetParam().stream), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(Streams, LzfseDecodeErrors, testing::ValuesIn(cases), LzfseTestData::caseName);

TEST(LzfseDecodeErrorCases, LzvnOpcodeFormsDecode)
{
    // small literal "ab", small distance L 0 M 3 D 2 -> "aba", medium L 1 M 5 D 3, small match 2
    // at D 3, large literal of 16 bytes, large match 16 at D 3.
    Bytes stream = lzvnStream(2 + 3 + 6 + 2 + 16 + 16,
        { 0xE2, 'a', 'b', 0x00, 0x02, 0xA8, 0x0E, 0x00, 'c', 0xF2, 0xE0, 0x00, '0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'a',
            'b', 'c', 'd', 'e', 'f', 0xF0, 0x00 });
    auto decoded = Lzfse::decode(stream, 1000);
    ASSERT_TRUE(decoded.has_value()) << Lzfse::message(decoded.error());
    std::string expected = "ababacbacbacb0123456789abcdefdefdefdefdefdefd";
    EXPECT_EQ(std::string(decoded->begin(), decoded->end()), expected);
}

// The limit applies to the sum over all blocks, each of which fits on its own.
TEST(LzfseDecodeErrorCases, OutputBeyondLimitIsRefused)
{
    Bytes stream;
    for (int block = 0; block < 2; ++block) {
        Bytes raw = text("bvx-");
        appendWord(raw, 600);
        raw.resize(raw.size() + 600, 'r');
        stream.insert(stream.end(), raw.begin(), raw.end());
    }
    stream.insert(stream.end(), endMarker.begin(), endMarker.end());
    EXPECT_EQ(errorOf(stream, 1200), std::nullopt);
    EXPECT_EQ(errorOf(stream, 1199), DecodeError::tooLarge);
}

// Damage to an entropy-coded header: each field checked against what the format allows.
TEST(LzfseDecodeErrorCases, DamagedEntropyHeadersAreRefused)
{
    Bytes good = LzfseStreamEncoder::encode(LzfseTestData::recordLike(6000, 3), LzfseStreamEncoder::BlockKind::entropyCoded);
    ASSERT_FALSE(errorOf(good).has_value());
    auto damaged = [&](std::size_t byte, std::uint8_t mask) {
        Bytes copy = good;
        copy[byte] ^= mask;
        return errorOf(copy);
    };
    EXPECT_EQ(damaged(28, 0x40), DecodeError::damagedHeader) << "L state beyond 63";
    EXPECT_EQ(damaged(8, 0x03), DecodeError::damagedHeader) << "literal count not a multiple of 4";
    EXPECT_EQ(damaged(14, 0x40), DecodeError::damagedHeader) << "triple count beyond 10000";
    EXPECT_EQ(damaged(12, 0x80), DecodeError::truncated) << "literal payload longer than the input";
    // These show as a misplaced next block, output falling short, or nonzero padding bits.
    EXPECT_TRUE(damaged(4, 0x01).has_value()) << "raw byte count off by one";
    EXPECT_TRUE(damaged(24, 0x01).has_value()) << "header size off by one";
    EXPECT_TRUE(damaged(15, 0x10).has_value()) << "literal padding changed";
}

