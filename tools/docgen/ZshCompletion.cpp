#include "ZshCompletion.hpp"

#include "CompletionWords.hpp"

namespace tarnwick::ZshCompletion {

namespace {

// A description inside a single-quoted _arguments or _describe argument: brackets and colons
// end fields there, and a single quote ends the shell word.
std::string quotedDescription(std::string_view text)
{
    std::string out;
    for (char c : text) {
        if (c == '\'')
            out += "'\\''";
        else if (c == '[' || c == ']' || c == ':' || c == '\\')
            out += std::string("\\") + c;
        else
            out += c;
    }
    return out;
}

std::string optionArgument(const AgentCommands::Option& option)
{
    std::string argument = "'" + option.flag + "[" + quotedDescription(CompletionWords::firstSentence(option.detail)) + "]:"
        + option.placeholder + ":";
    if (option.value.kind == AgentCommands::Value::Kind::choice) {
        argument += "(";
        for (const std::string& choice : option.value.choices)
            argument += (argument.back() == '(' ? "" : " ") + choice;
        argument += ")";
    } else if (option.value.kind == AgentCommands::Value::Kind::folder) {
        argument += "_files -/";
    } else {
        argument += " ";
    }
    return argument + "'";
}

std::string commandCase(const AgentCommands::Command& command)
{
    std::string text = "    " + command.name + ")\n        _arguments -s \\\n";
    for (const AgentCommands::Option& option : command.options)
        text += "            " + optionArgument(option) + " \\\n";
    if (CompletionWords::takesPath(command))
        text += "            '1:PATH:_files' \\\n";
    text += "            '" + std::string(CompletionWords::json.flag) + "[" + std::string(CompletionWords::json.text)
        + "]' \\\n";
    text += "            '" + std::string(CompletionWords::help.flag) + "[" + std::string(CompletionWords::help.text)
        + "]'\n        ;;\n";
    return text;
}

}

std::string render()
{
    std::string text = "#compdef tarnwick\n"
                       "# zsh completion for tarnwick, generated from its command table.\n"
                       "\n"
                       "_tarnwick() {\n"
                       "    local -a commands\n"
                       "    commands=(\n";
    for (const AgentCommands::Command& command : AgentCommands::table())
        text += "        '" + command.name + ":" + quotedDescription(CompletionWords::firstSentence(command.summary)) + "'\n";
    text += "        'help:This help, or a command'\\''s'\n"
            "        'version:Print the version'\n"
            "    )\n"
            "    if (( CURRENT == 2 )); then\n"
            "        _describe -t commands 'tarnwick command' commands\n"
            "        compadd -- "
        + std::string(CompletionWords::open.flag) + " " + std::string(CompletionWords::help.flag) + " "
        + std::string(CompletionWords::version.flag)
        + "\n"
          "        return\n"
          "    fi\n"
          "    local command=$words[2]\n"
          "    shift words\n"
          "    (( CURRENT-- ))\n"
          "    case $command in\n"
          "    --open)\n"
          "        _files -/\n"
          "        ;;\n"
          "    help)\n"
          "        (( CURRENT == 2 )) && _describe -t commands 'tarnwick command' commands\n"
          "        ;;\n";
    for (const AgentCommands::Command& command : AgentCommands::table())
        text += commandCase(command);
    text += "    esac\n"
            "}\n"
            "\n"
            "_tarnwick \"$@\"\n";
    return text;
}

}
