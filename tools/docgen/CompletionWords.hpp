#pragma once

#include "Agent/AgentCommands.hpp"

#include <string>
#include <string_view>
#include <vector>

// What every shell's completion offers, read from the command table: the first words, and
// for each command its options and whether it takes a path. The parser's own words (help,
// version and the global flags) are not in the table, so they are named here once.
namespace tarnwick::CompletionWords {

struct GlobalOption {
    std::string_view flag;
    std::string_view text;
};

inline constexpr GlobalOption json { "--json", "Print the answer as JSON" };
inline constexpr GlobalOption help { "--help", "This command's help" };
inline constexpr GlobalOption version { "--version", "Print the version" };
inline constexpr GlobalOption open { "--open", "Start the app and scan a folder" };

// The table's commands, then help and version.
std::vector<std::string> firstWords();
std::vector<std::string> commandNames();
// The first sentence of a help text, for the one-line descriptions shells show.
std::string firstSentence(std::string_view text);
bool takesPath(const AgentCommands::Command& command);

}
