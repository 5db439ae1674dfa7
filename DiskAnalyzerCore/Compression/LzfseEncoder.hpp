#pragma once

#include "Compression/LzfseBlockWriter.hpp"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace tarnwick {

// The entropy-coded encoder's front end: a hash-chain match finder with one step of lazy
// evaluation, feeding (L, M, D) triples to the block writer. Follows the reference encoder's
// choices, so its output is about as compact.
class LzfseEncoder {
public:
    LzfseEncoder();

    // Appends bvx2 blocks for `input` (not the end-of-stream marker) to `output`.
    void encode(std::span<const std::uint8_t> input, std::vector<std::uint8_t>& output);

private:
    struct Match {
        std::size_t start = 0;
        std::size_t length = 0; // 0: no match
        std::size_t distance = 0;
    };
    // The last 4 positions whose 4 bytes hashed here, newest first, with those bytes.
    struct Bucket {
        std::array<std::int32_t, 4> positions;
        std::array<std::uint32_t, 4> values;
    };

    void reset();
    void visit(std::size_t position);
    void choose(Match incoming);
    Match longestMatch(std::size_t position, std::uint32_t value, const Bucket& candidates) const;
    std::size_t matchLength(std::size_t position, std::size_t reference) const;
    void extendBackwards(Match& match) const;
    void noMatchAt(std::size_t position);
    void emit(const Match& match);
    void emitLiterals(std::size_t count);
    void push(std::size_t literals, std::size_t length, std::size_t distance);
    bool tryPushSplit(std::size_t literals, std::size_t length, std::size_t distance);
    void pushPiecewise(std::size_t literals, std::size_t length, std::size_t distance);
    void pushOrFlush(std::uint32_t l, std::uint32_t m, std::uint32_t d, std::size_t literalStart);
    void rebase(std::size_t position);

    std::vector<Bucket> m_buckets;
    LzfseBlockWriter m_writer;
    std::span<const std::uint8_t> m_input;
    std::vector<std::uint8_t>* m_output = nullptr;
    std::size_t m_literalStart = 0; // first input byte not yet covered by a triple
    std::size_t m_base = 0; // bucket positions are stored relative to this
    Match m_pending;
};

}
