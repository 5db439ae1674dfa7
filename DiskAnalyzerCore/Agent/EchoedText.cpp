#include "Agent/EchoedText.hpp"

#include <array>

namespace tarnwick::EchoedText {

namespace {

constexpr std::string_view ellipsis = "…";

bool isContinuationByte(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// The largest cut at or below limit that does not split a UTF-8 sequence.
std::size_t cutBefore(std::string_view text, std::size_t limit)
{
    std::size_t cut = std::min(limit, text.size());
    while (cut > 0 && cut < text.size() && isContinuationByte(text[cut]))
        --cut;
    return cut;
}

// The smallest cut at or above start that does not split a UTF-8 sequence.
std::size_t cutAfter(std::string_view text, std::size_t start)
{
    std::size_t cut = std::min(start, text.size());
    while (cut < text.size() && isContinuationByte(text[cut]))
        ++cut;
    return cut;
}

}

std::string shortened(std::string_view text, std::size_t maxBytes)
{
    if (text.size() <= maxBytes)
        return std::string(text);
    if (maxBytes < ellipsis.size())
        return std::string(ellipsis);
    std::size_t kept = maxBytes - ellipsis.size();
    std::size_t head = cutBefore(text, kept - kept / 2);
    std::size_t tail = cutAfter(text, text.size() - kept / 2);
    return std::string(text.substr(0, head)) + std::string(ellipsis) + std::string(text.substr(tail));
}

std::string visible(std::string_view text)
{
    constexpr std::array<char, 16> hexDigits { '0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'a', 'b', 'c', 'd', 'e', 'f' };
    std::string shown;
    shown.reserve(text.size());
    for (char c : text) {
        auto byte = static_cast<unsigned char>(c);
        switch (c) {
        case '\n':
            shown += "\\n";
            continue;
        case '\t':
            shown += "\\t";
            continue;
        case '\r':
            shown += "\\r";
            continue;
        case '\\':
            shown += "\\\\";
            continue;
        default:
            break;
        }
        if (byte < 0x20 || byte == 0x7F) {
            shown += "\\x";
            shown += hexDigits[byte >> 4];
            shown += hexDigits[byte & 0x0F];
        } else {
            shown += c;
        }
    }
    return shown;
}

std::string shown(std::string_view text, std::size_t maxBytes)
{
    return visible(shortened(text, maxBytes));
}

}
