#pragma once

#include "Compression/LzfseFormat.hpp"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tarnwick {

// The normalized frequencies of an LZFSE block's four FSE tables, in their stored order:
// L, M, D, then literals.
struct FrequencyTables {
    std::array<std::uint16_t, LzfseFormat::frequencyCount> values {};

    std::span<std::uint16_t> l() { return std::span(values).subspan(0, LzfseFormat::lSymbols); }
    std::span<std::uint16_t> m() { return std::span(values).subspan(mStart, LzfseFormat::mSymbols); }
    std::span<std::uint16_t> d() { return std::span(values).subspan(dStart, LzfseFormat::dSymbols); }
    std::span<std::uint16_t> literal() { return std::span(values).subspan(literalStart, LzfseFormat::literalSymbols); }
    std::span<const std::uint16_t> l() const { return std::span(values).subspan(0, LzfseFormat::lSymbols); }
    std::span<const std::uint16_t> m() const { return std::span(values).subspan(mStart, LzfseFormat::mSymbols); }
    std::span<const std::uint16_t> d() const { return std::span(values).subspan(dStart, LzfseFormat::dSymbols); }
    std::span<const std::uint16_t> literal() const { return std::span(values).subspan(literalStart, LzfseFormat::literalSymbols); }

    // v2 headers pack the 360 values into variable-length codes of 2 to 14 bits, LSB first.
    // Unpacking fails unless the bytes hold exactly 360 codes (less than a byte left over).
    static std::optional<FrequencyTables> unpack(std::span<const std::uint8_t> bytes);
    void pack(std::vector<std::uint8_t>& output) const;

    // v1 headers store them as plain little-endian 16-bit words.
    static FrequencyTables readPlain(std::span<const std::uint8_t, 2 * LzfseFormat::frequencyCount> bytes);

private:
    static constexpr std::size_t mStart = LzfseFormat::lSymbols;
    static constexpr std::size_t dStart = mStart + LzfseFormat::mSymbols;
    static constexpr std::size_t literalStart = dStart + LzfseFormat::dSymbols;
};

}
