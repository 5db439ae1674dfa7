#include "Compression/LzfseEncoder.hpp"
#include "Compression/LzfseStreamDecoder.hpp"
#include "LzfseTestData.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;

// Inputs past 2 GiB move the hash table's position base now and then. Moving it every 2 MiB
// instead must keep every candidate within reach: not a single output byte may change.
TEST(LzfseEncoder, MovingThePositionBaseKeepsOutputUnchanged)
{
    std::vector<std::uint8_t> input = LzfseTestData::recordLike(5'000'000, 6);
    std::vector<std::uint8_t> usual;
    std::vector<std::uint8_t> rebased;
    LzfseEncoder().encode(input, usual);
    LzfseEncoder(std::size_t { 2 } << 20).encode(input, rebased);
    EXPECT_TRUE(usual == rebased);

    rebased.insert(rebased.end(), { 'b', 'v', 'x', '$' });
    std::vector<std::uint8_t> decoded;
    EXPECT_FALSE(LzfseStreamDecoder::decode(rebased, input.size(), decoded).has_value());
    EXPECT_TRUE(decoded == input);
}

// One encoder object serves several inputs; nothing of the previous input may leak into the next.
TEST(LzfseEncoder, ReusedEncoderStartsAfresh)
{
    std::vector<std::uint8_t> first = LzfseTestData::recordLike(50'000, 1);
    std::vector<std::uint8_t> second = LzfseTestData::recordLike(50'000, 2);
    LzfseEncoder reused;
    std::vector<std::uint8_t> scratch;
    std::vector<std::uint8_t> afterFirst;
    std::vector<std::uint8_t> fresh;
    reused.encode(first, scratch);
    reused.encode(second, afterFirst);
    LzfseEncoder().encode(second, fresh);
    EXPECT_TRUE(afterFirst == fresh);
}
