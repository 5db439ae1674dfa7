#include "Compression/LzfseEncoder.hpp"

#include "Compression/ByteOrder.hpp"
#include "Compression/LzfseFormat.hpp"

#include <algorithm>
#include <bit>
#include <limits>
#include <utility>

namespace tarnwick {

using namespace LzfseFormat;

namespace {

constexpr unsigned hashBits = 14;
constexpr std::size_t minimumMatch = 4;
// A match this long is taken at once instead of waiting to see whether the next position
// starts a better one.
constexpr std::size_t goodMatch = 40;
// Longer matches are cut here and resumed by the next search.
constexpr std::size_t matchLengthCap = 100 * maxMValue;
// With this many literals waiting and no match, some are flushed as literal-only triples.
constexpr std::size_t literalBacklog = 8 * maxLValue;

constexpr std::int32_t noPosition = std::numeric_limits<std::int32_t>::min();
// Bucket positions are 32-bit offsets from a base that moves forward on very large inputs.
constexpr std::size_t rebaseLimit = 0x7000'0000;
constexpr std::int64_t rebaseKeeps = std::int64_t { 1 } << 20;

constexpr std::uint32_t hash(std::uint32_t fourBytes) { return (fourBytes * 2654435761u) >> (32 - hashBits); }

// Calls add(l, m, d, literalOffset) for each triple a match with `literals` literals before it
// needs, splitting runs and lengths beyond what one triple holds. Stops when add fails.
template<typename Add>
bool forEachTriple(std::size_t literals, std::size_t length, std::size_t distance, Add add)
{
    std::size_t offset = 0;
    for (; literals > maxLValue; literals -= maxLValue, offset += maxLValue) {
        if (!add(maxLValue, 0u, 1u, offset))
            return false;
    }
    auto l = static_cast<std::uint32_t>(literals);
    auto d = static_cast<std::uint32_t>(distance);
    for (; length > maxMValue; length -= maxMValue, offset += l, l = 0) {
        if (!add(l, maxMValue, d, offset))
            return false;
    }
    if (l == 0 && length == 0)
        return true;
    return add(l, static_cast<std::uint32_t>(length), d, offset);
}

}

LzfseEncoder::LzfseEncoder()
    : m_buckets(std::size_t { 1 } << hashBits)
{
}

void LzfseEncoder::reset()
{
    Bucket empty;
    empty.positions.fill(noPosition);
    empty.values.fill(0);
    std::fill(m_buckets.begin(), m_buckets.end(), empty);
    m_literalStart = 0;
    m_base = 0;
    m_pending = {};
}

void LzfseEncoder::encode(std::span<const std::uint8_t> input, std::vector<std::uint8_t>& output)
{
    reset();
    m_input = input;
    m_output = &output;
    // The last 8 bytes never start a match, which keeps every 8-byte comparison in bounds.
    for (std::size_t position = 0; position + 8 < input.size(); ++position) {
        if (position - m_base >= rebaseLimit) [[unlikely]]
            rebase(position);
        visit(position);
    }
    if (m_pending.length > 0)
        emit(std::exchange(m_pending, {}));
    if (m_literalStart < input.size())
        emitLiterals(input.size() - m_literalStart);
    if (!m_writer.empty())
        m_writer.writeBlock(output);
}

void LzfseEncoder::rebase(std::size_t position)
{
    std::int64_t shift = static_cast<std::int64_t>(position - m_base) - rebaseKeeps;
    for (Bucket& bucket : m_buckets) {
        for (std::int32_t& stored : bucket.positions) {
            std::int64_t moved = std::int64_t { stored } - shift;
            stored = stored == noPosition || moved < -rebaseKeeps ? noPosition : static_cast<std::int32_t>(moved);
        }
    }
    m_base += static_cast<std::size_t>(shift);
}

// Every position enters the hash table; only those not already covered by a match search it.
void LzfseEncoder::visit(std::size_t position)
{
    std::uint32_t value = ByteOrder::load32(m_input.data() + position);
    Bucket& bucket = m_buckets[hash(value)];
    Bucket candidates = bucket;
    auto relative = static_cast<std::int32_t>(position - m_base);
    bucket.positions = { relative, candidates.positions[0], candidates.positions[1], candidates.positions[2] };
    bucket.values = { value, candidates.values[0], candidates.values[1], candidates.values[2] };
    if (position < m_literalStart)
        return;
    Match incoming = longestMatch(position, value, candidates);
    if (incoming.length == 0)
        return noMatchAt(position);
    incoming.length = std::min(incoming.length, matchLengthCap);
    extendBackwards(incoming);
    choose(incoming);
}

LzfseEncoder::Match LzfseEncoder::longestMatch(std::size_t position, std::uint32_t value, const Bucket& candidates) const
{
    Match best;
    auto relative = static_cast<std::int64_t>(position - m_base);
    for (std::size_t k = 0; k < candidates.positions.size(); ++k) {
        std::int64_t distance = relative - candidates.positions[k];
        if (candidates.values[k] != value || distance <= 0 || distance > maxDValue)
            continue;
        std::size_t length = matchLength(position, position - static_cast<std::size_t>(distance));
        if (length > best.length)
            best = { position, length, static_cast<std::size_t>(distance) };
    }
    return best;
}

// The first 4 bytes are known to be equal; compare 8 at a time while 8 remain.
std::size_t LzfseEncoder::matchLength(std::size_t position, std::size_t reference) const
{
    const std::uint8_t* bytes = m_input.data();
    std::size_t length = minimumMatch;
    while (position + length + 8 <= m_input.size()) {
        std::uint64_t difference = ByteOrder::load64(bytes + position + length) ^ ByteOrder::load64(bytes + reference + length);
        if (difference != 0)
            return length + static_cast<std::size_t>(std::countr_zero(difference) >> 3);
        length += 8;
    }
    return length;
}

void LzfseEncoder::extendBackwards(Match& match) const
{
    const std::uint8_t* bytes = m_input.data();
    while (match.start > m_literalStart && match.start > match.distance
        && bytes[match.start - 1] == bytes[match.start - 1 - match.distance]) {
        --match.start;
        ++match.length;
    }
}

// Lazy by one match: a match waits (pending) while the next positions may find a longer one.
void LzfseEncoder::choose(Match incoming)
{
    if (incoming.length >= goodMatch) {
        m_pending = {};
        return emit(incoming);
    }
    if (m_pending.length == 0) {
        m_pending = incoming;
        return;
    }
    if (m_pending.start + m_pending.length <= incoming.start)
        return emit(std::exchange(m_pending, incoming));
    emit(incoming.length > m_pending.length ? incoming : m_pending);
    m_pending = {};
}

void LzfseEncoder::noMatchAt(std::size_t position)
{
    if (position - m_literalStart <= literalBacklog)
        return;
    if (m_pending.length > 0)
        emit(std::exchange(m_pending, {}));
    else
        emitLiterals(maxLValue);
}

void LzfseEncoder::emit(const Match& match)
{
    push(match.start - m_literalStart, match.length, match.distance);
    m_literalStart = match.start + match.length;
}

// Literal-only triples carry D = 1, a valid distance the decoder checks but never copies from.
void LzfseEncoder::emitLiterals(std::size_t count)
{
    push(count, 0, 1);
    m_literalStart += count;
}

// A match goes whole into one block; when it does not fit, the block is written and the match
// starts the next one.
void LzfseEncoder::push(std::size_t literals, std::size_t length, std::size_t distance)
{
    if (tryPushSplit(literals, length, distance))
        return;
    m_writer.writeBlock(*m_output);
    if (!tryPushSplit(literals, length, distance))
        pushPiecewise(literals, length, distance);
}

bool LzfseEncoder::tryPushSplit(std::size_t literals, std::size_t length, std::size_t distance)
{
    LzfseBlockWriter::Mark mark = m_writer.mark();
    const std::uint8_t* start = m_input.data() + m_literalStart;
    bool pushed = forEachTriple(literals, length, distance, [&](std::uint32_t l, std::uint32_t m, std::uint32_t d, std::size_t offset) {
        return m_writer.tryPush(l, m, d, start + offset);
    });
    if (!pushed)
        m_writer.rollBack(mark);
    return pushed;
}

// Only a literal run longer than a whole block gets here; the match finder never makes one.
void LzfseEncoder::pushPiecewise(std::size_t literals, std::size_t length, std::size_t distance)
{
    forEachTriple(literals, length, distance, [&](std::uint32_t l, std::uint32_t m, std::uint32_t d, std::size_t offset) {
        pushOrFlush(l, m, d, m_literalStart + offset);
        return true;
    });
}

void LzfseEncoder::pushOrFlush(std::uint32_t l, std::uint32_t m, std::uint32_t d, std::size_t literalStart)
{
    const std::uint8_t* literals = m_input.data() + literalStart;
    if (!m_writer.tryPush(l, m, d, literals)) {
        m_writer.writeBlock(*m_output);
        m_writer.tryPush(l, m, d, literals);
    }
}

}
