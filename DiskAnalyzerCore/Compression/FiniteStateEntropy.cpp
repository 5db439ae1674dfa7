#include "Compression/FiniteStateEntropy.hpp"

#include <algorithm>
#include <bit>
#include <cassert>

namespace tarnwick::FiniteStateEntropy {

namespace {

int floorLog2(std::uint32_t value) { return std::bit_width(value) - 1; }

// Takes back an over-allocation from the symbols with room to give, a fraction of each at a
// time, so that no counted symbol drops to 0.
void reduceOverrun(std::span<std::uint16_t> frequencies, std::uint32_t overrun)
{
    for (int shift = 3; shift >= 0 && overrun > 0; --shift) {
        for (std::uint16_t& frequency : frequencies) {
            if (frequency <= 1)
                continue;
            std::uint32_t taken = std::min<std::uint32_t>((frequency - 1u) >> shift, overrun);
            frequency = static_cast<std::uint16_t>(frequency - taken);
            overrun -= taken;
            if (overrun == 0)
                return;
        }
    }
}

// Where a symbol's states start, and the shift k with N <= f * 2^k < 2N.
struct SymbolRun {
    std::uint32_t offset;
    int shift;
};

template<typename Visit>
void forEachRun(std::span<const std::uint16_t> frequencies, std::uint32_t stateCount, Visit visit)
{
    int stateBits = floorLog2(stateCount);
    std::uint32_t offset = 0;
    for (std::size_t symbol = 0; symbol < frequencies.size(); ++symbol) {
        std::uint32_t frequency = frequencies[symbol];
        if (frequency == 0)
            continue;
        visit(symbol, frequency, SymbolRun { offset, stateBits - floorLog2(frequency) });
        offset += frequency;
    }
}

// Calls fill(state, bitCount, delta) for each of a symbol's states.
template<typename Fill>
void forEachState(std::uint32_t frequency, std::uint32_t stateCount, SymbolRun run, Fill fill)
{
    std::int32_t n = static_cast<std::int32_t>(stateCount);
    std::int32_t f = static_cast<std::int32_t>(frequency);
    std::int32_t firstShorter = ((2 * n) >> run.shift) - f;
    for (std::int32_t j = 0; j < f; ++j) {
        std::uint32_t state = run.offset + static_cast<std::uint32_t>(j);
        if (j < firstShorter)
            fill(state, run.shift, ((f + j) << run.shift) - n);
        else
            fill(state, run.shift - 1, (j - firstShorter) << (run.shift - 1));
    }
}

}

void normalize(std::span<const std::uint32_t> counts, std::uint32_t stateCount, std::span<std::uint16_t> frequencies)
{
    assert(counts.size() == frequencies.size() && "one frequency per symbol");
    std::uint32_t total = 0;
    for (std::uint32_t count : counts)
        total += count;
    std::uint32_t step = total == 0 ? 0 : static_cast<std::uint32_t>((std::uint64_t { 1 } << 31) / total);
    int shift = 30 - floorLog2(stateCount);
    std::int32_t remaining = static_cast<std::int32_t>(stateCount);
    std::uint32_t largest = 0;
    std::size_t largestSymbol = 0;
    for (std::size_t symbol = 0; symbol < counts.size(); ++symbol) {
        std::uint32_t frequency = (((counts[symbol] * step) >> shift) + 1) >> 1;
        if (frequency == 0 && counts[symbol] != 0)
            frequency = 1;
        frequencies[symbol] = static_cast<std::uint16_t>(frequency);
        remaining -= static_cast<std::int32_t>(frequency);
        if (frequency > largest) {
            largest = frequency;
            largestSymbol = symbol;
        }
    }
    if (-remaining < static_cast<std::int32_t>(largest >> 2))
        frequencies[largestSymbol] = static_cast<std::uint16_t>(frequencies[largestSymbol] + remaining);
    else
        reduceOverrun(frequencies, static_cast<std::uint32_t>(-remaining));
}

std::uint32_t sum(std::span<const std::uint16_t> frequencies)
{
    std::uint32_t total = 0;
    for (std::uint16_t frequency : frequencies)
        total += frequency;
    return total;
}

void buildDecoder(std::span<const std::uint16_t> frequencies, std::span<DecoderEntry> table)
{
    std::uint32_t stateCount = static_cast<std::uint32_t>(table.size());
    forEachRun(frequencies, stateCount, [&](std::size_t symbol, std::uint32_t frequency, SymbolRun run) {
        forEachState(frequency, stateCount, run, [&](std::uint32_t state, int bitCount, std::int32_t delta) {
            table[state] = { static_cast<std::int16_t>(delta), static_cast<std::uint8_t>(bitCount), static_cast<std::uint8_t>(symbol) };
        });
    });
}

void buildValueDecoder(std::span<const std::uint16_t> frequencies, std::span<const std::uint8_t> extraBits,
    std::span<const std::uint32_t> bases, std::span<ValueDecoderEntry> table)
{
    std::uint32_t stateCount = static_cast<std::uint32_t>(table.size());
    forEachRun(frequencies, stateCount, [&](std::size_t symbol, std::uint32_t frequency, SymbolRun run) {
        forEachState(frequency, stateCount, run, [&](std::uint32_t state, int bitCount, std::int32_t delta) {
            table[state] = { static_cast<std::uint8_t>(bitCount + extraBits[symbol]), extraBits[symbol],
                static_cast<std::int16_t>(delta), bases[symbol] };
        });
    });
}

void buildEncoder(std::span<const std::uint16_t> frequencies, std::uint32_t stateCount, std::span<EncoderEntry> table)
{
    std::int32_t n = static_cast<std::int32_t>(stateCount);
    std::fill(table.begin(), table.end(), EncoderEntry {});
    forEachRun(frequencies, stateCount, [&](std::size_t symbol, std::uint32_t frequency, SymbolRun run) {
        std::int32_t f = static_cast<std::int32_t>(frequency);
        std::int32_t base = static_cast<std::int32_t>(run.offset) - f;
        table[symbol] = {
            static_cast<std::int16_t>((f << run.shift) - n),
            static_cast<std::int16_t>(run.shift),
            static_cast<std::int16_t>(base + (n >> run.shift)),
            static_cast<std::int16_t>(run.shift == 0 ? 0 : base + (n >> (run.shift - 1))),
        };
    });
}

}
