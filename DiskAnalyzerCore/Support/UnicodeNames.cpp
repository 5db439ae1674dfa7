#include "Support/UnicodeNames.hpp"

#include <cstdlib>
#include <cstring>
#include <utf8proc.h>

namespace tarnwick::UnicodeNames {

namespace {

// Length of the valid UTF-8 sequence at the start of bytes, or 0 when it is invalid.
std::size_t validSequenceLength(std::string_view bytes)
{
    auto c = static_cast<unsigned char>(bytes[0]);
    if (c < 0x80)
        return 1;
    std::size_t length;
    std::uint32_t minimum;
    std::uint32_t value;
    if ((c & 0xE0) == 0xC0) {
        length = 2, minimum = 0x80, value = c & 0x1F;
    } else if ((c & 0xF0) == 0xE0) {
        length = 3, minimum = 0x800, value = c & 0x0F;
    } else if ((c & 0xF8) == 0xF0) {
        length = 4, minimum = 0x10000, value = c & 0x07;
    } else {
        return 0;
    }
    if (bytes.size() < length)
        return 0;
    for (std::size_t i = 1; i < length; ++i) {
        auto next = static_cast<unsigned char>(bytes[i]);
        if ((next & 0xC0) != 0x80)
            return 0;
        value = (value << 6) | (next & 0x3F);
    }
    if (value < minimum || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
        return 0;
    return length;
}

}

bool isValidUTF8(std::string_view bytes)
{
    // Most names are ASCII: eight bytes at a time until the first that is not.
    while (bytes.size() >= 8) {
        std::uint64_t word;
        std::memcpy(&word, bytes.data(), 8);
        if (word & 0x8080808080808080ULL)
            break;
        bytes.remove_prefix(8);
    }
    while (!bytes.empty()) {
        std::size_t length = validSequenceLength(bytes);
        if (length == 0)
            return false;
        bytes.remove_prefix(length);
    }
    return true;
}

std::string repaired(std::string_view bytes)
{
    std::string result;
    result.reserve(bytes.size() + 8);
    while (!bytes.empty()) {
        std::size_t length = validSequenceLength(bytes);
        if (length == 0) {
            result += "\xEF\xBF\xBD";
            bytes.remove_prefix(1);
        } else {
            result.append(bytes.substr(0, length));
            bytes.remove_prefix(length);
        }
    }
    return result;
}

std::string normalized(std::string_view name)
{
    bool ascii = true;
    for (char c : name)
        ascii = ascii && static_cast<unsigned char>(c) < 0x80;
    if (ascii)
        return std::string(name);
    utf8proc_uint8_t* output = nullptr;
    utf8proc_ssize_t length = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(name.data()),
        static_cast<utf8proc_ssize_t>(name.size()), &output, static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE));
    if (length < 0)
        return std::string(name);
    std::string result(reinterpret_cast<const char*>(output), static_cast<std::size_t>(length));
    std::free(output);
    return result;
}

bool hasPathPrefix(std::string_view path, std::string_view prefix)
{
    while (prefix.size() > 1 && prefix.back() == '/')
        prefix.remove_suffix(1);
    if (prefix == "/")
        return !path.empty() && path.front() == '/';
    if (path.size() < prefix.size() || path.substr(0, prefix.size()) != prefix)
        return false;
    return path.size() == prefix.size() || path[prefix.size()] == '/';
}

std::string_view dropPathPrefix(std::string_view path, std::string_view prefix)
{
    while (prefix.size() > 1 && prefix.back() == '/')
        prefix.remove_suffix(1);
    std::string_view rest = prefix == "/" ? path : path.substr(prefix.size());
    while (!rest.empty() && rest.front() == '/')
        rest.remove_prefix(1);
    return rest;
}

}
