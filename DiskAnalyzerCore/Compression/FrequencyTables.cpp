#include "Compression/FrequencyTables.hpp"

#include "Compression/ByteOrder.hpp"

namespace tarnwick {

namespace {

struct Code {
    std::uint32_t bits;
    unsigned width;
};

// Small frequencies, the common case, get the short codes. The low bits tell the width:
// x0 -> 2 bits, 01 -> 3, 011 -> 5, 0111 -> 8, 1111 -> 14.
Code codeFor(std::uint32_t value)
{
    if (value < 2)
        return { value << 1, 2 };
    if (value < 4)
        return { 1 | ((value - 2) << 2), 3 };
    if (value < 8)
        return { 3 | ((value - 4) << 3), 5 };
    if (value < 24)
        return { 7 | ((value - 8) << 4), 8 };
    return { 15 | ((value - 24) << 4), 14 };
}

Code valueOf(std::uint32_t bits)
{
    if ((bits & 1) == 0)
        return { (bits >> 1) & 1, 2 };
    if ((bits & 3) == 1)
        return { 2 + ((bits >> 2) & 1), 3 };
    if ((bits & 7) == 3)
        return { 4 + ((bits >> 3) & 3), 5 };
    if ((bits & 15) == 7)
        return { 8 + ((bits >> 4) & 15), 8 };
    return { 24 + ((bits >> 4) & 1023), 14 };
}

}

std::optional<FrequencyTables> FrequencyTables::unpack(std::span<const std::uint8_t> bytes)
{
    FrequencyTables tables;
    std::uint32_t pending = 0;
    unsigned pendingBits = 0;
    std::size_t next = 0;
    for (std::uint16_t& value : tables.values) {
        while (pendingBits <= 24 && next < bytes.size()) {
            pending |= std::uint32_t { bytes[next++] } << pendingBits;
            pendingBits += 8;
        }
        Code code = valueOf(pending);
        if (code.width > pendingBits)
            return std::nullopt;
        value = static_cast<std::uint16_t>(code.bits);
        pending >>= code.width;
        pendingBits -= code.width;
    }
    if (next != bytes.size() || pendingBits >= 8)
        return std::nullopt;
    return tables;
}

void FrequencyTables::pack(std::vector<std::uint8_t>& output) const
{
    std::uint32_t pending = 0;
    unsigned pendingBits = 0;
    for (std::uint16_t value : values) {
        Code code = codeFor(value);
        pending |= code.bits << pendingBits;
        pendingBits += code.width;
        for (; pendingBits >= 8; pendingBits -= 8, pending >>= 8)
            output.push_back(static_cast<std::uint8_t>(pending));
    }
    if (pendingBits > 0)
        output.push_back(static_cast<std::uint8_t>(pending));
}

FrequencyTables FrequencyTables::readPlain(std::span<const std::uint8_t, 2 * LzfseFormat::frequencyCount> bytes)
{
    FrequencyTables tables;
    for (std::size_t i = 0; i < tables.values.size(); ++i)
        tables.values[i] = ByteOrder::load16(bytes.data() + 2 * i);
    return tables;
}

}
