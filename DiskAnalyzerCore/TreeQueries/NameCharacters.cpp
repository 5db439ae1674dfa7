#include "TreeQueries/NameCharacters.hpp"

#include <array>
#include <cstring>
#include <utf8proc.h>

namespace tarnwick::NameCharacters {

namespace {

enum Class : std::uint16_t {
    alpha = 1 << 0,
    digit = 1 << 1,
    alnum = 1 << 2,
    upperCase = 1 << 3,
    lowerCase = 1 << 4,
    space = 1 << 5,
    blank = 1 << 6,
    punct = 1 << 7,
    xdigit = 1 << 8,
    cntrl = 1 << 9,
    print = 1 << 10,
    graph = 1 << 11,
};

struct ClassName {
    std::u32string_view name;
    Class value;
};

constexpr std::array<ClassName, 12> classNames { {
    { U"alpha", alpha },
    { U"digit", digit },
    { U"alnum", alnum },
    { U"upper", upperCase },
    { U"lower", lowerCase },
    { U"space", space },
    { U"blank", blank },
    { U"punct", punct },
    { U"xdigit", xdigit },
    { U"cntrl", cntrl },
    { U"print", print },
    { U"graph", graph },
} };

}

char32_t fold(char32_t c)
{
    return c < 0x80 ? foldAscii(c) : static_cast<char32_t>(utf8proc_tolower(static_cast<utf8proc_int32_t>(c)));
}

char32_t upper(char32_t c)
{
    if (c < 0x80)
        return c >= 'a' && c <= 'z' ? c - ('a' - 'A') : c;
    return static_cast<char32_t>(utf8proc_toupper(static_cast<utf8proc_int32_t>(c)));
}

// Eight bytes at a time: names are checked one after another over whole trees.
bool isAscii(std::string_view bytes)
{
    std::uint64_t seen = 0;
    std::size_t i = 0;
    for (; i + 8 <= bytes.size(); i += 8) {
        std::uint64_t word;
        std::memcpy(&word, bytes.data() + i, 8);
        seen |= word;
    }
    for (; i < bytes.size(); ++i)
        seen |= static_cast<unsigned char>(bytes[i]);
    return (seen & 0x8080808080808080ull) == 0;
}

std::u32string decode(std::string_view bytes)
{
    std::u32string result;
    result.reserve(bytes.size());
    while (!bytes.empty()) {
        utf8proc_int32_t codePoint = 0;
        utf8proc_ssize_t length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(bytes.data()),
            static_cast<utf8proc_ssize_t>(bytes.size()), &codePoint);
        if (length <= 0) {
            result.push_back(0xDC00 + static_cast<unsigned char>(bytes.front()));
            bytes.remove_prefix(1);
        } else {
            result.push_back(static_cast<char32_t>(codePoint));
            bytes.remove_prefix(static_cast<std::size_t>(length));
        }
    }
    return result;
}

std::optional<std::uint16_t> classNamed(std::u32string_view name)
{
    for (const ClassName& entry : classNames) {
        if (entry.name == name)
            return entry.value;
    }
    return std::nullopt;
}

std::uint16_t classesOf(char32_t c)
{
    auto category = utf8proc_category(static_cast<utf8proc_int32_t>(c));
    bool isLetter = category >= UTF8PROC_CATEGORY_LU && category <= UTF8PROC_CATEGORY_LO;
    bool isCased = category >= UTF8PROC_CATEGORY_LU && category <= UTF8PROC_CATEGORY_LT;
    bool isDigit = c >= '0' && c <= '9';
    bool isSpace = c == ' ' || (c >= '\t' && c <= '\r') || (category >= UTF8PROC_CATEGORY_ZS && category <= UTF8PROC_CATEGORY_ZP);
    bool isBlank = c == ' ' || c == '\t' || category == UTF8PROC_CATEGORY_ZS;
    bool isControl = category == UTF8PROC_CATEGORY_CC;
    bool isPunct = category >= UTF8PROC_CATEGORY_PC && category <= UTF8PROC_CATEGORY_SO;
    bool isHex = isDigit || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    bool isPrintable = !isControl && category != UTF8PROC_CATEGORY_CN && category != UTF8PROC_CATEGORY_CS;
    std::uint16_t classes = 0;
    classes |= isLetter ? alpha : 0;
    classes |= isDigit ? digit : 0;
    classes |= isLetter || isDigit ? alnum : 0;
    classes |= isCased ? upperCase | lowerCase : 0;
    classes |= isSpace ? space : 0;
    classes |= isBlank ? blank : 0;
    classes |= isPunct ? punct : 0;
    classes |= isHex ? xdigit : 0;
    classes |= isControl ? cntrl : 0;
    classes |= isPrintable ? print : 0;
    classes |= isPrintable && !isSpace ? graph : 0;
    return classes;
}

}
