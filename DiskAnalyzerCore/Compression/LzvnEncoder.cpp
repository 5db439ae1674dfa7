#include "Compression/LzvnEncoder.hpp"

#include "Compression/ByteOrder.hpp"

#include <algorithm>
#include <bit>
#include <utility>

namespace tarnwick {

namespace {

constexpr unsigned hashBits = 14;
constexpr std::size_t minimumMatch = 3;
constexpr std::size_t farthestDistance = 65535;
constexpr std::size_t shortDistanceLimit = 1536; // carried by a 2-byte opcode
// With this many literals waiting and no match, some are written out.
constexpr std::size_t literalBacklog = 400;
constexpr std::size_t literalChunk = 271;

constexpr std::uint32_t hash(std::uint32_t threeBytes)
{
    return ((threeBytes * 4161u) >> 12) & ((1u << hashBits) - 1);
}

std::uint32_t threeBytesAt(const std::uint8_t* bytes) { return ByteOrder::load32(bytes) & 0xFFFFFF; }

}

LzvnEncoder::LzvnEncoder()
    : m_buckets(std::size_t { 1 } << hashBits)
{
}

std::vector<std::uint8_t> LzvnEncoder::encode(std::span<const std::uint8_t> input)
{
    std::fill(m_buckets.begin(), m_buckets.end(), std::array<std::int32_t, 4> {});
    m_input = input;
    m_emitter.reset(input.size() + input.size() / 64 + 16);
    m_literalStart = 0;
    m_pending = {};
    // The last 8 bytes never start a match, which keeps every 4-byte load in bounds.
    for (std::size_t position = 0; position + 8 < input.size(); ++position)
        visit(position);
    if (m_pending.length > 0)
        emit(std::exchange(m_pending, {}));
    m_emitter.literals(input.subspan(m_literalStart));
    return m_emitter.finish();
}

void LzvnEncoder::visit(std::size_t position)
{
    std::uint32_t value = threeBytesAt(m_input.data() + position);
    auto& bucket = m_buckets[hash(value)];
    std::array<std::int32_t, 4> candidates = bucket;
    bucket = { static_cast<std::int32_t>(position), candidates[0], candidates[1], candidates[2] };
    if (position < m_literalStart)
        return;
    Match best;
    for (std::int32_t candidate : candidates)
        consider(position, static_cast<std::size_t>(candidate), Candidate::fromHashTable, best);
    std::size_t previous = m_emitter.previousDistance();
    if (previous != 0 && previous <= position)
        consider(position, position - previous, Candidate::atPreviousDistance, best);
    if (best.length == 0)
        return noMatchAt(position);
    choose(best);
}

void LzvnEncoder::consider(std::size_t position, std::size_t reference, Candidate candidate, Match& best) const
{
    std::size_t distance = position - reference;
    if (reference >= position || distance > farthestDistance)
        return;
    const std::uint8_t* bytes = m_input.data();
    if (threeBytesAt(bytes + reference) != threeBytesAt(bytes + position))
        return;
    Match match { position, matchLength(position, reference), distance, 0 };
    while (match.start > m_literalStart && match.start > distance && bytes[match.start - 1] == bytes[match.start - 1 - distance]) {
        --match.start;
        ++match.length;
    }
    // Reusing the previous distance costs no distance bytes; far distances cost one more. Only
    // the explicit look at the previous distance earns the bonus, as in the reference encoder
    // (a table hit at that distance scores by its distance alone).
    auto length = static_cast<std::ptrdiff_t>(match.length);
    match.gain = candidate == Candidate::atPreviousDistance ? length - 1 : distance < shortDistanceLimit ? length - 2 : length - 3;
    if (best.length == 0 || match.gain > best.gain || (match.gain == best.gain && match.end() > best.end() + 1))
        best = match;
}

std::size_t LzvnEncoder::matchLength(std::size_t position, std::size_t reference) const
{
    const std::uint8_t* bytes = m_input.data();
    std::size_t length = minimumMatch;
    while (position + length + 4 <= m_input.size()) {
        std::uint32_t difference = ByteOrder::load32(bytes + position + length) ^ ByteOrder::load32(bytes + reference + length);
        if (difference != 0)
            return length + static_cast<std::size_t>(std::countr_zero(difference) >> 3);
        length += 4;
    }
    while (position + length < m_input.size() && bytes[position + length] == bytes[reference + length])
        ++length;
    return length;
}

void LzvnEncoder::choose(const Match& incoming)
{
    if (m_pending.length == 0) {
        m_pending = incoming;
        return;
    }
    if (m_pending.end() <= incoming.start)
        return emit(std::exchange(m_pending, incoming));
    emit(incoming.gain > m_pending.gain ? incoming : m_pending);
    m_pending = {};
}

void LzvnEncoder::noMatchAt(std::size_t position)
{
    if (position - m_literalStart < literalBacklog)
        return;
    if (m_pending.length > 0) {
        emit(std::exchange(m_pending, {}));
        return;
    }
    m_emitter.literals(m_input.subspan(m_literalStart, literalChunk));
    m_literalStart += literalChunk;
}

void LzvnEncoder::emit(const Match& match)
{
    m_emitter.match(m_input.subspan(m_literalStart, match.start - m_literalStart), match.length, match.distance);
    m_literalStart = match.end();
}

}
