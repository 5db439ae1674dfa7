#include "Compression/LzvnDecoder.hpp"

#include "Compression/ByteOrder.hpp"
#include "Compression/MatchCopy.hpp"

#include <algorithm>
#include <array>

namespace tarnwick::LzvnDecoder {

using Lzfse::DecodeError;

namespace {

enum class Opcode : std::uint8_t {
    smallDistance, // LLMMMDDD dddddddd: L 0-3, M 3-10, D up to 1535
    largeDistance, // LLMMM111 + u16 D
    previousDistance, // LLMMM110: D unchanged
    mediumDistance, // 101LLMMM + u16 (D << 2 | 2 more M bits): M up to 34
    smallLiteral, // 1110LLLL
    largeLiteral, // 0xE0 + (L - 16)
    smallMatch, // 1111MMMM: D unchanged
    largeMatch, // 0xF0 + (M - 16): D unchanged
    endOfStream, // 0x06 + 7 ignored bytes
    nop,
    undefined,
};

constexpr Opcode classify(unsigned byte)
{
    if (byte == 0x06)
        return Opcode::endOfStream;
    if (byte == 0x0E || byte == 0x16)
        return Opcode::nop;
    // Forms whose L and M would break M <= 10 - 2L, and previous-distance forms with L = 0.
    if ((byte >= 0x70 && byte <= 0x7F) || (byte >= 0xD0 && byte <= 0xDF) || (byte < 0x40 && (byte & 7) == 6))
        return Opcode::undefined;
    if (byte >= 0xA0 && byte <= 0xBF)
        return Opcode::mediumDistance;
    if (byte == 0xE0)
        return Opcode::largeLiteral;
    if (byte > 0xE0 && byte < 0xF0)
        return Opcode::smallLiteral;
    if (byte == 0xF0)
        return Opcode::largeMatch;
    if (byte > 0xF0)
        return Opcode::smallMatch;
    if ((byte & 7) == 7)
        return Opcode::largeDistance;
    return (byte & 7) == 6 ? Opcode::previousDistance : Opcode::smallDistance;
}

constexpr std::array<Opcode, 256> opcodes = [] {
    std::array<Opcode, 256> table {};
    for (unsigned byte = 0; byte < 256; ++byte)
        table[byte] = classify(byte);
    return table;
}();

// What one opcode asks for, before its literals and match are carried out.
struct Step {
    std::size_t opcodeBytes = 1;
    std::size_t literals = 0;
    std::size_t match = 0;
    std::size_t distance = 0;
    bool setsDistance = false; // otherwise the match uses the previous distance
};

constexpr std::size_t opcodeBytes(Opcode opcode)
{
    switch (opcode) {
    case Opcode::largeDistance:
    case Opcode::mediumDistance:
        return 3;
    case Opcode::smallDistance:
    case Opcode::largeLiteral:
    case Opcode::largeMatch:
        return 2;
    default:
        return 1;
    }
}

// `in` holds at least opcodeBytes(opcode) bytes; the opcode is neither undefined nor the end.
Step readStep(Opcode opcode, const std::uint8_t* in)
{
    std::size_t byte = in[0];
    std::size_t literals = byte >> 6;
    std::size_t match = ((byte >> 3) & 7) + 3;
    switch (opcode) {
    case Opcode::smallDistance:
        return { 2, literals, match, ((byte & 7) << 8) | in[1], true };
    case Opcode::largeDistance:
        return { 3, literals, match, ByteOrder::load16(in + 1), true };
    case Opcode::previousDistance:
        return { 1, literals, match, 0, false };
    case Opcode::mediumDistance: {
        std::size_t word = ByteOrder::load16(in + 1);
        return { 3, (byte >> 3) & 3, (((byte & 7) << 2) | (word & 3)) + 3, word >> 2, true };
    }
    case Opcode::smallLiteral:
        return { 1, byte & 15, 0, 0, false };
    case Opcode::largeLiteral:
        return { 2, in[1] + 16u, 0, 0, false };
    case Opcode::smallMatch:
        return { 1, 0, byte & 15, 0, false };
    case Opcode::largeMatch:
        return { 2, 0, in[1] + 16u, 0, false };
    default:
        return {};
    }
}

class Decoder {
public:
    Decoder(std::span<const std::uint8_t> payload, std::span<std::uint8_t> output, std::size_t position)
        : m_in(payload.data())
        , m_inEnd(payload.data() + payload.size())
        , m_outStart(output.data())
        , m_out(output.data() + position)
        , m_outEnd(output.data() + output.size())
    {
    }

    std::optional<DecodeError> run()
    {
        while (m_in < m_inEnd) {
            Opcode opcode = opcodes[*m_in];
            if (opcode == Opcode::endOfStream)
                return finish();
            if (opcode == Opcode::undefined || opcodeBytes(opcode) > static_cast<std::size_t>(m_inEnd - m_in))
                return DecodeError::damagedData;
            if (!apply(readStep(opcode, m_in)))
                return DecodeError::damagedData;
        }
        return DecodeError::damagedData;
    }

private:
    // The end opcode must be the payload's last 8 bytes and the output must be complete.
    std::optional<DecodeError> finish() const
    {
        if (m_inEnd - m_in != 8 || m_out != m_outEnd)
            return DecodeError::damagedData;
        return std::nullopt;
    }

    bool apply(const Step& step)
    {
        m_in += step.opcodeBytes;
        std::size_t input = static_cast<std::size_t>(m_inEnd - m_in);
        std::size_t room = static_cast<std::size_t>(m_outEnd - m_out);
        if (step.literals > input || step.literals + step.match > room)
            return false;
        MatchCopy::copyLiterals(m_out, m_in, step.literals, std::min(room, input));
        m_in += step.literals;
        m_out += step.literals;
        if (step.setsDistance)
            m_distance = step.distance;
        if (step.match == 0)
            return true;
        if (m_distance == 0 || m_distance > static_cast<std::size_t>(m_out - m_outStart))
            return false;
        MatchCopy::copyMatch(m_out, m_distance, step.match, room - step.literals);
        m_out += step.match;
        return true;
    }

    const std::uint8_t* m_in;
    const std::uint8_t* const m_inEnd;
    std::uint8_t* const m_outStart;
    std::uint8_t* m_out;
    std::uint8_t* const m_outEnd;
    std::size_t m_distance = 0;
};

}

std::optional<DecodeError> decode(std::span<const std::uint8_t> payload, std::span<std::uint8_t> output, std::size_t position)
{
    return Decoder(payload, output, position).run();
}

}
