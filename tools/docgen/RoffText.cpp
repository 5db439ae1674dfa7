#include "RoffText.hpp"

#include <cstdint>
#include <cstdio>

namespace tarnwick::RoffText {

namespace {

// Decodes the UTF-8 sequence at text[index], advancing index; malformed input comes out as
// U+FFFD, since the generator's input is the program's own tables.
std::uint32_t nextCodePoint(std::string_view text, std::size_t& index)
{
    auto byte = static_cast<unsigned char>(text[index++]);
    int continuation = byte >= 0xF0 ? 3 : byte >= 0xE0 ? 2 : byte >= 0xC0 ? 1 : 0;
    std::uint32_t value = continuation == 3 ? byte & 0x07u : continuation == 2 ? byte & 0x0Fu : byte & 0x1Fu;
    for (int i = 0; i < continuation; ++i) {
        if (index >= text.size() || (static_cast<unsigned char>(text[index]) & 0xC0u) != 0x80u)
            return 0xFFFD;
        value = (value << 6) | (static_cast<unsigned char>(text[index++]) & 0x3Fu);
    }
    return value;
}

std::string named(std::uint32_t codePoint)
{
    switch (codePoint) {
    case 0x2018: return "\\(oq";
    case 0x2019: return "\\(cq";
    case 0x201C: return "\\(lq";
    case 0x201D: return "\\(rq";
    case 0x2013: return "\\(en";
    case 0x2014: return "\\(em";
    case 0x2248: return "\\(~~";
    case 0x2026: return ".\\|.\\|.";
    case 0x00A0: return "\\~";
    default: break;
    }
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "\\[u%04X]", static_cast<unsigned>(codePoint));
    return buffer;
}

}

std::string escaped(std::string_view text)
{
    std::string out;
    out.reserve(text.size() + 8);
    std::size_t index = 0;
    while (index < text.size()) {
        char c = text[index];
        if (static_cast<unsigned char>(c) >= 0x80) {
            out += named(nextCodePoint(text, index));
            continue;
        }
        ++index;
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else if ((c == '.' || c == '\'') && (out.empty() || out.back() == '\n'))
            out += std::string("\\&") + c;
        else
            out += c;
    }
    return out;
}

}
