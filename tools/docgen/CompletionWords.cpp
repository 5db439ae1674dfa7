#include "CompletionWords.hpp"

namespace tarnwick::CompletionWords {

std::vector<std::string> commandNames()
{
    std::vector<std::string> names;
    for (const AgentCommands::Command& command : AgentCommands::table())
        names.push_back(command.name);
    return names;
}

std::vector<std::string> firstWords()
{
    std::vector<std::string> words = commandNames();
    words.emplace_back("help");
    words.emplace_back("version");
    return words;
}

std::string firstSentence(std::string_view text)
{
    std::size_t end = text.find(". ");
    if (end != std::string_view::npos)
        text = text.substr(0, end);
    if (text.ends_with('.'))
        text.remove_suffix(1);
    return std::string(text);
}

bool takesPath(const AgentCommands::Command& command)
{
    return command.path.kind != AgentCommands::PathArgument::Kind::none;
}

}
