#pragma once

#include <string>
#include <vector>

namespace tarnwick::CommandLineMode {

// The tool: parses the words, answers help, version, skill and usage errors itself, asks the
// running app for the rest (starting it when the command needs it) and prints the answer.
// Returns the exit status.
int run(const std::string& programPath, const std::vector<std::string>& words);

}
