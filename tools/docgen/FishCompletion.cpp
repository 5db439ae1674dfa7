#include "FishCompletion.hpp"

#include "CompletionWords.hpp"

namespace tarnwick::FishCompletion {

namespace {

std::string quoted(std::string_view text)
{
    std::string out = "'";
    for (char c : text) {
        if (c == '\'' || c == '\\')
            out += '\\';
        out += c;
    }
    return out + "'";
}

std::string joined(const std::vector<std::string>& words)
{
    std::string list;
    for (const std::string& word : words)
        list += (list.empty() ? "" : " ") + word;
    return list;
}

std::string after(std::string_view command)
{
    return " -n '__fish_seen_subcommand_from " + std::string(command) + "'";
}

std::string commandLines(const AgentCommands::Command& command)
{
    std::string text = "complete -c tarnwick -n __fish_use_subcommand -a " + command.name + " -d "
        + quoted(CompletionWords::firstSentence(command.summary)) + "\n";
    for (const AgentCommands::Option& option : command.options) {
        text += "complete -c tarnwick" + after(command.name) + " -l " + option.flag.substr(2) + " -x";
        if (option.value.kind == AgentCommands::Value::Kind::choice)
            text += " -a " + quoted(joined(option.value.choices));
        else if (option.value.kind == AgentCommands::Value::Kind::folder)
            text += " -a '(__fish_complete_directories)'";
        text += " -d " + quoted(CompletionWords::firstSentence(option.detail)) + "\n";
    }
    if (CompletionWords::takesPath(command))
        text += "complete -c tarnwick" + after(command.name) + " -F\n";
    return text;
}

}

std::string render()
{
    std::string text = "# fish completion for tarnwick, generated from its command table.\n"
                       "complete -c tarnwick -f\n";
    for (const AgentCommands::Command& command : AgentCommands::table())
        text += commandLines(command);
    text += "complete -c tarnwick -n __fish_use_subcommand -a help -d 'This help, or a command\\'s'\n";
    text += "complete -c tarnwick" + after("help") + " -a " + quoted(joined(CompletionWords::commandNames())) + "\n";
    text += "complete -c tarnwick -n __fish_use_subcommand -a version -d 'Print the version'\n";
    text += "complete -c tarnwick -n __fish_use_subcommand -l open -x -a '(__fish_complete_directories)' -d "
        + quoted(CompletionWords::open.text) + "\n";
    text += "complete -c tarnwick -n __fish_use_subcommand -l version -d " + quoted(CompletionWords::version.text) + "\n";
    text += "complete -c tarnwick -n 'not __fish_use_subcommand' -l json -d " + quoted(CompletionWords::json.text) + "\n";
    text += "complete -c tarnwick -l help -d " + quoted(CompletionWords::help.text) + "\n";
    return text;
}

}
