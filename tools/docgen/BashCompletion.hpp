#pragma once

#include <string>

// The bash completion script for tarnwick, on top of the bash-completion package's helpers.
namespace tarnwick::BashCompletion {

std::string render();

}
