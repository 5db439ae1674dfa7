#pragma once

#include <string>
#include <string_view>

// Plain text as roff sees it: groff reads a line starting with "." or "'" as a request, a
// backslash as an escape and "-" as a hyphen, and it renders a UTF-8 character faithfully
// only through its own name for it.
namespace tarnwick::RoffText {

// One paragraph or label, safe anywhere in a line.
std::string escaped(std::string_view text);

}
