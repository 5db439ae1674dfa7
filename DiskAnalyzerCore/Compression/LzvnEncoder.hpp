#pragma once

#include "Compression/LzvnEmitter.hpp"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace tarnwick {

// LZVN's match finder, meant for inputs of a few kilobytes where entropy coding does not pay:
// a small hash table of recent positions, a gain score that favours reusing the previous
// distance and short distances, and one step of lazy evaluation.
class LzvnEncoder {
public:
    LzvnEncoder();

    // The payload of a bvxn block for `input`, ending with the end-of-stream opcode.
    std::vector<std::uint8_t> encode(std::span<const std::uint8_t> input);

private:
    struct Match {
        std::size_t start = 0;
        std::size_t length = 0; // 0: no match
        std::size_t distance = 0;
        std::ptrdiff_t gain = 0; // bytes saved over coding the match as literals, roughly
        [[nodiscard]] std::size_t end() const { return start + length; }
    };

    void visit(std::size_t position);
    enum class Candidate : std::uint8_t { fromHashTable, atPreviousDistance };
    void consider(std::size_t position, std::size_t reference, Candidate candidate, Match& best) const;
    std::size_t matchLength(std::size_t position, std::size_t reference) const;
    void choose(const Match& incoming);
    void noMatchAt(std::size_t position);
    void emit(const Match& match);

    std::vector<std::array<std::int32_t, 4>> m_buckets;
    std::span<const std::uint8_t> m_input;
    LzvnEmitter m_emitter;
    std::size_t m_literalStart = 0;
    Match m_pending;
};

}
