#pragma once

#include <string>
#include <string_view>

// The manual page tarnwick(1) in roff, built from the command table so that it says what
// `tarnwick help` says: every command with its path, options, examples and whether it needs
// the app.
namespace tarnwick::ManPage {

std::string render(std::string_view version);

}
