#include "BashCompletion.hpp"

#include "CompletionWords.hpp"

namespace tarnwick::BashCompletion {

namespace {

// Words joined for compgen -W inside single quotes; the table's words hold no quotes.
std::string wordList(const std::vector<std::string>& words)
{
    std::string list;
    for (const std::string& word : words)
        list += (list.empty() ? "" : " ") + word;
    return list;
}

std::string commandCase(const AgentCommands::Command& command)
{
    std::vector<std::string> flags;
    std::string valueCases;
    for (const AgentCommands::Option& option : command.options) {
        flags.push_back(option.flag);
        valueCases += "        " + option.flag + ")";
        if (option.value.kind == AgentCommands::Value::Kind::choice)
            valueCases += " COMPREPLY=($(compgen -W '" + wordList(option.value.choices) + "' -- \"$cur\"));";
        else if (option.value.kind == AgentCommands::Value::Kind::folder)
            valueCases += " COMPREPLY=($(compgen -d -- \"$cur\"));";
        valueCases += " return ;;\n";
    }
    flags.emplace_back(CompletionWords::json.flag);
    flags.emplace_back(CompletionWords::help.flag);
    std::string text = "    " + command.name + ")\n";
    text += "        options='" + wordList(flags) + "'\n";
    if (CompletionWords::takesPath(command))
        text += "        path=1\n";
    if (!valueCases.empty())
        text += "        case $prev in\n" + valueCases + "        esac\n";
    text += "        ;;\n";
    return text;
}

}

std::string render()
{
    std::string text = "# bash completion for tarnwick, generated from its command table.\n"
                       "_tarnwick()\n"
                       "{\n"
                       "    local cur prev words cword\n"
                       "    _init_completion || return\n"
                       "    if [[ $cword -eq 1 ]]; then\n"
                       "        COMPREPLY=($(compgen -W '"
        + wordList(CompletionWords::firstWords()) + " " + std::string(CompletionWords::open.flag) + " "
        + std::string(CompletionWords::help.flag) + " " + std::string(CompletionWords::version.flag)
        + "' -- \"$cur\"))\n"
          "        return\n"
          "    fi\n"
          "    local options= path=0\n"
          "    case ${words[1]} in\n"
          "    --open)\n"
          "        [[ $cword -eq 2 ]] && _filedir -d\n"
          "        return ;;\n"
          "    help)\n"
          "        [[ $cword -eq 2 ]] && COMPREPLY=($(compgen -W '"
        + wordList(CompletionWords::commandNames())
        + "' -- \"$cur\"))\n"
          "        return ;;\n";
    for (const AgentCommands::Command& command : AgentCommands::table())
        text += commandCase(command);
    text += "    *)\n"
            "        return ;;\n"
            "    esac\n"
            "    if [[ $cur == -* ]]; then\n"
            "        COMPREPLY=($(compgen -W \"$options\" -- \"$cur\"))\n"
            "    elif [[ $path -eq 1 ]]; then\n"
            "        _filedir\n"
            "    fi\n"
            "} &&\n"
            "    complete -F _tarnwick tarnwick\n";
    return text;
}

}
