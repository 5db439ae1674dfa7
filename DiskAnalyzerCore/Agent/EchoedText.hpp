#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// How the command line repeats what it was given (a path, a name, a typed value) inside its
// answers: a path can be far longer than the 8 KB an answer may take, and a name can hold
// line feeds or terminal escapes that would forge lines of the answer or drive the terminal.
namespace tarnwick::EchoedText {

// The longest path or value an answer repeats as it stands; longer ones lose their middle.
inline constexpr std::size_t longestEchoBytes = 1'024;

// text as it stands when it has at most maxBytes UTF-8 bytes; otherwise its beginning and
// its end around "…", maxBytes in all, cut only between characters.
std::string shortened(std::string_view text, std::size_t maxBytes = longestEchoBytes);

// text for the text output: every control character written visibly, as "\n", "\t", "\r" or
// "\x1b", and a backslash as "\\" so that the escapes cannot be confused with a real name.
// JSON output needs none of this: its encoder escapes them already.
std::string visible(std::string_view text);

// Both: the form in which a path or a name goes into a text answer.
std::string shown(std::string_view text, std::size_t maxBytes = longestEchoBytes);

}
