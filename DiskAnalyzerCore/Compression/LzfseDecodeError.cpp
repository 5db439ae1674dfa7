#include "Compression/LzfseDecodeError.hpp"

namespace tarnwick::Lzfse {

std::string_view message(DecodeError error)
{
    switch (error) {
    case DecodeError::truncated:
        return "The compressed data is incomplete.";
    case DecodeError::unknownBlock:
        return "The compressed data contains a block of an unknown kind.";
    case DecodeError::damagedHeader:
        return "A compressed block has a damaged header.";
    case DecodeError::damagedData:
        return "A compressed block's contents are damaged.";
    case DecodeError::tooLarge:
        return "The decompressed data would be larger than allowed.";
    }
    return "The compressed data is damaged.";
}

}
