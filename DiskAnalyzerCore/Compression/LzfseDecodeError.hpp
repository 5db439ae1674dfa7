#pragma once

#include <cstdint>
#include <string_view>

namespace tarnwick::Lzfse {

// Why compressed data could not be decoded. Any of these means the data is unusable.
enum class DecodeError : std::uint8_t {
    truncated,      // the data ends before its end-of-stream marker
    unknownBlock,   // a block starts with a word that is not a known block kind
    damagedHeader,  // a block header holds impossible counts, sizes, states or tables
    damagedData,    // a block's payload does not decode to what its header announces
    tooLarge,       // the decoded data would exceed the size the caller allows
};

std::string_view message(DecodeError error);

}
