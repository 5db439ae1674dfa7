#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarnwick {

// Characters of item names as a name search compares them: Unicode code points, folded
// to lower case, with character classes for bracket expressions.
namespace NameCharacters {

constexpr char32_t foldAscii(char32_t c)
{
    return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c;
}
char32_t fold(char32_t c);
char32_t upper(char32_t c);

bool isAscii(std::string_view bytes);
// Each byte of an invalid sequence becomes a lone surrogate (U+DC80 to U+DCFF), which no
// valid text decodes to, so such a byte still matches the same byte in a pattern.
std::u32string decode(std::string_view bytes);

// The class bits of a name between "[:" and ":]" ("alpha", "digit", ...); absent when unknown.
std::optional<std::uint16_t> classNamed(std::u32string_view name);
// The class bits a character belongs to. Case doesn't matter in a search, so "upper" and
// "lower" both mean a letter that has case.
std::uint16_t classesOf(char32_t c);

}

}
