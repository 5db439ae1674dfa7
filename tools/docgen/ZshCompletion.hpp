#pragma once

#include <string>

// The zsh completion function _tarnwick, with each command's and option's description.
namespace tarnwick::ZshCompletion {

std::string render();

}
