// libFuzzer entry for the LZFSE codec. Arbitrary bytes are decoded as a stream, which must fail
// cleanly or stay within its limit; the same bytes are then encoded with every block kind and
// must decode back unchanged. Sanitizers catch any out-of-bounds access on the way.
#include "Compression/LzfseStreamDecoder.hpp"
#include "Compression/LzfseStreamEncoder.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

namespace {

using namespace tarnwick;
using LzfseStreamEncoder::BlockKind;

constexpr std::size_t decodeLimit = std::size_t { 1 } << 24;

void decodeArbitrary(std::span<const std::uint8_t> input)
{
    std::vector<std::uint8_t> decoded;
    if (!LzfseStreamDecoder::decode(input, decodeLimit, decoded) && decoded.size() > decodeLimit)
        std::abort();
}

void roundTrip(std::span<const std::uint8_t> input, BlockKind kind)
{
    std::vector<std::uint8_t> encoded = LzfseStreamEncoder::encode(input, kind);
    std::vector<std::uint8_t> decoded;
    if (LzfseStreamDecoder::decode(encoded, input.size(), decoded) || !std::equal(decoded.begin(), decoded.end(), input.begin(), input.end()))
        std::abort();
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::span<const std::uint8_t> input(data, size);
    decodeArbitrary(input);
    for (BlockKind kind : { BlockKind::automatic, BlockKind::lzvn, BlockKind::entropyCoded })
        roundTrip(input, kind);
    return 0;
}
