#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tarnwick {

// Writes LZVN opcodes: picks for each match the shortest form that can carry it (see
// LzvnDecoder.hpp for the opcode layouts) and tracks the distance a later opcode may reuse.
class LzvnEmitter {
public:
    // Starts a new payload, reserving room for about `expectedBytes`.
    void reset(std::size_t expectedBytes);
    // `literals` precede the match; length >= 3, 1 <= distance <= 65535.
    void match(std::span<const std::uint8_t> literals, std::size_t length, std::size_t distance);
    void literals(std::span<const std::uint8_t> literals);
    // Appends the end-of-stream opcode and hands over the payload.
    std::vector<std::uint8_t> finish();

    [[nodiscard]] std::size_t previousDistance() const { return m_previousDistance; }

private:
    // Leaves at most 3 literals, the most a match opcode carries.
    std::span<const std::uint8_t> literalsBeforeMatch(std::span<const std::uint8_t> literals);
    void matchOpcode(std::size_t literals, std::size_t& length, std::size_t distance);
    void moreMatch(std::size_t length);
    void bytes(std::span<const std::uint8_t> bytes);
    void byte(unsigned value) { m_output.push_back(static_cast<std::uint8_t>(value)); }

    std::vector<std::uint8_t> m_output;
    std::size_t m_previousDistance = 0;
};

}
