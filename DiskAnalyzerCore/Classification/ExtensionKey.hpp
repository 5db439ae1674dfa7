#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>

namespace tarnwick {

// A name's extension, lower-cased into a fixed 16-byte buffer: the longest extension the
// classifier accepts. Keys compare and hash as two machine words, so a table lookup per
// node costs no allocation and no byte-by-byte hashing.
class ExtensionKey {
public:
    static constexpr std::size_t maxLength = 16;

    // Lower-cases ASCII letters; other bytes are kept as they are. Absent for an empty text
    // or one longer than maxLength bytes.
    static std::optional<ExtensionKey> make(std::string_view text)
    {
        if (text.empty() || text.size() > maxLength)
            return std::nullopt;
        ExtensionKey key;
        for (std::size_t i = 0; i < text.size(); ++i) {
            char c = text[i];
            key.m_bytes[i] = (c >= 'A' && c <= 'Z') ? static_cast<char>(c + ('a' - 'A')) : c;
        }
        key.m_length = static_cast<std::uint8_t>(text.size());
        return key;
    }

    [[nodiscard]] std::string_view view() const { return { m_bytes, m_length }; }
    [[nodiscard]] std::size_t size() const { return m_length; }

    bool operator==(const ExtensionKey& other) const
    {
        return m_length == other.m_length && std::memcmp(m_bytes, other.m_bytes, maxLength) == 0;
    }

    [[nodiscard]] std::size_t hash() const
    {
        std::uint64_t low = 0;
        std::uint64_t high = 0;
        std::memcpy(&low, m_bytes, 8);
        std::memcpy(&high, m_bytes + 8, 8);
        std::uint64_t mixed = low * 0x9E3779B97F4A7C15ull ^ std::rotl(high * 0xC2B2AE3D27D4EB4Full, 29) ^ m_length;
        return static_cast<std::size_t>(mixed ^ (mixed >> 32));
    }

    struct Hash {
        std::size_t operator()(const ExtensionKey& key) const { return key.hash(); }
    };

private:
    char m_bytes[maxLength] = {};
    std::uint8_t m_length = 0;
};

}
