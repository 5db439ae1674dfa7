#include "Compression/LzvnEmitter.hpp"

#include <algorithm>
#include <utility>

namespace tarnwick {

namespace {

constexpr std::size_t smallFormMaximum = 15;
constexpr std::size_t largeFormMaximum = 271; // 16 + 255
constexpr std::size_t smallDistanceLimit = 1536;
constexpr std::size_t mediumDistanceLimit = 16384;
constexpr std::size_t mediumMatchMaximum = 34;

}

void LzvnEmitter::bytes(std::span<const std::uint8_t> bytes) { m_output.insert(m_output.end(), bytes.begin(), bytes.end()); }

void LzvnEmitter::literals(std::span<const std::uint8_t> literals)
{
    while (literals.size() > smallFormMaximum) {
        std::size_t count = std::min(literals.size(), largeFormMaximum);
        byte(0xE0);
        byte(static_cast<unsigned>(count - 16));
        bytes(literals.first(count));
        literals = literals.subspan(count);
    }
    if (!literals.empty()) {
        byte(0xE0 | static_cast<unsigned>(literals.size()));
        bytes(literals);
    }
}

std::span<const std::uint8_t> LzvnEmitter::literalsBeforeMatch(std::span<const std::uint8_t> literals)
{
    while (literals.size() > smallFormMaximum) {
        std::size_t count = std::min(literals.size(), largeFormMaximum);
        this->literals(literals.first(count));
        literals = literals.subspan(count);
    }
    if (literals.size() > 3) {
        this->literals(literals);
        return {};
    }
    return literals;
}

void LzvnEmitter::match(std::span<const std::uint8_t> literals, std::size_t length, std::size_t distance)
{
    literals = literalsBeforeMatch(literals);
    matchOpcode(literals.size(), length, distance);
    bytes(literals);
    moreMatch(length);
    m_previousDistance = distance;
}

// The 1- to 3-byte forms hold M <= 10 - 2L; the medium form holds up to 34 at once. What the
// opcode cannot hold is left in `length` for match-only opcodes.
void LzvnEmitter::matchOpcode(std::size_t literals, std::size_t& length, std::size_t distance)
{
    std::size_t first = std::min(length, 10 - 2 * literals);
    std::size_t rest = length - first;
    auto head = static_cast<unsigned>((literals << 6) | ((first - 3) << 3));
    if (distance == m_previousDistance) {
        byte(literals == 0 ? 0xF0 | static_cast<unsigned>(first) : head | 6);
    } else if (distance < smallDistanceLimit) {
        byte(head | static_cast<unsigned>(distance >> 8));
        byte(static_cast<unsigned>(distance & 0xFF));
    } else if (distance >= mediumDistanceLimit || rest == 0 || length > mediumMatchMaximum) {
        byte(head | 7);
        byte(static_cast<unsigned>(distance & 0xFF));
        byte(static_cast<unsigned>(distance >> 8));
    } else {
        std::size_t word = (distance << 2) | ((length - 3) & 3);
        byte(0xA0 | static_cast<unsigned>((literals << 3) | ((length - 3) >> 2)));
        byte(static_cast<unsigned>(word & 0xFF));
        byte(static_cast<unsigned>(word >> 8));
        rest = 0;
    }
    length = rest;
}

void LzvnEmitter::moreMatch(std::size_t length)
{
    while (length > smallFormMaximum) {
        std::size_t count = std::min(length, largeFormMaximum);
        byte(0xF0);
        byte(static_cast<unsigned>(count - 16));
        length -= count;
    }
    if (length > 0)
        byte(0xF0 | static_cast<unsigned>(length));
}

void LzvnEmitter::reset(std::size_t expectedBytes)
{
    m_output.clear();
    m_output.reserve(expectedBytes);
    m_previousDistance = 0;
}

std::vector<std::uint8_t> LzvnEmitter::finish()
{
    byte(0x06);
    m_output.insert(m_output.end(), 7, 0);
    return std::move(m_output);
}

}
