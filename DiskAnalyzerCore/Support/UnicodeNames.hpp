#pragma once

#include <string>
#include <string_view>

namespace tarnwick::UnicodeNames {

// Valid UTF-8 with every invalid sequence replaced by U+FFFD; names are never rejected.
std::string repaired(std::string_view bytes);
bool isValidUTF8(std::string_view bytes);
// Canonical composition (NFC), so that a typed "é" finds a stored "e\u0301"; invalid input comes back unchanged.
std::string normalized(std::string_view name);
// True when path is prefix itself or lies below it ("/a" is a prefix of "/a/b", not of "/ab").
bool hasPathPrefix(std::string_view path, std::string_view prefix);
// The part of path below prefix, without a leading "/"; call only when hasPathPrefix holds.
std::string_view dropPathPrefix(std::string_view path, std::string_view prefix);

}
