#include "Agent/AgentCommands.hpp"

#include "Agent/EchoedText.hpp"

#include <array>

namespace tarnwick::AgentCommands {

namespace {

Invocation usageError(std::string message)
{
    return { Invocation::UsageError { std::move(message) } };
}

constexpr std::array<std::string_view, 4> alertLimitKeys { "fuller_than_percent", "larger_than", "share_percent", "grows_by" };

// The rules that tie add-alert's options together; none of the other commands has any.
std::optional<std::string> addAlertError(const Request& request)
{
    int limits = 0;
    for (std::string_view key : alertLimitKeys)
        limits += request.arguments.contains(std::string(key)) ? 1 : 0;
    if (limits != 1)
        return "add-alert needs one limit: --fuller-than, --larger-than, --share or --grows-by.";
    if (request.arguments.contains("period") && !request.arguments.contains("grows_by"))
        return "--period goes with --grows-by.";
    return std::nullopt;
}

// The rules on a whole request, whether its arguments came as typed words or over the socket.
std::optional<std::string> requestError(const Command& command, const Request& request)
{
    if (command.path.kind == PathArgument::Kind::required && !request.arguments.contains("path"))
        return command.name + " needs a path: " + usageLine(command) + ".";
    if (command.name == "add-alert")
        return addAlertError(request);
    return std::nullopt;
}

std::string valueError(const Option& option, std::string_view value)
{
    return option.flag + " doesn't take " + EchoedText::shortened(value) + ": " + option.detail;
}

const Option* optionWithKey(const Command& command, std::string_view key)
{
    for (const Option& option : command.options) {
        if (option.key == key)
            return &option;
    }
    return nullptr;
}

// Steps through the words after the command's name, filling request; a usage error message
// for the first word that doesn't fit.
std::optional<std::string> readArguments(const Command& command, std::span<const std::string> words, Request& request)
{
    bool hasPath = false;
    for (std::size_t index = 0; index < words.size(); ++index) {
        const std::string& word = words[index];
        if (word.starts_with("--")) {
            const Option* option = command.option(word);
            if (option == nullptr)
                return command.name + " has no option " + EchoedText::shortened(word) + ". Run help " + command.name + ".";
            if (index + 1 == words.size())
                return option->flag + " needs " + option->placeholder + ".";
            const std::string& text = words[++index];
            std::optional<std::string> value = parseValue(option->value, text);
            if (!value)
                return valueError(*option, text);
            request.arguments[option->key] = std::move(*value);
            continue;
        }
        if (command.path.kind == PathArgument::Kind::none)
            return command.name + " takes no path.";
        if (hasPath)
            return command.name + " takes one path; quote a path with spaces.";
        hasPath = true;
        request.arguments["path"] = word;
    }
    return requestError(command, request);
}

}

std::expected<Request, RequestError> validated(const Request& request)
{
    const Command* command = find(request.command);
    if (command == nullptr)
        return std::unexpected(RequestError { RequestError::Kind::unknownCommand,
            "Tarnwick has no command " + EchoedText::shortened(request.command) + ". Run help for the list." });
    auto invalid = [](std::string message) { return std::unexpected(RequestError { RequestError::Kind::invalidArguments, std::move(message) }); };
    Request checked { command->name, {}, request.json };
    for (const auto& [key, value] : request.arguments) {
        if (key == "path") {
            if (command->path.kind == PathArgument::Kind::none)
                return invalid(command->name + " takes no path.");
            checked.arguments[key] = value;
            continue;
        }
        const Option* option = optionWithKey(*command, key);
        if (option == nullptr)
            return invalid(command->name + " has no option " + EchoedText::shortened(key) + ". Run help " + command->name + ".");
        std::optional<std::string> parsed = parseValue(option->value, value);
        if (!parsed)
            return invalid(valueError(*option, value));
        checked.arguments[key] = std::move(*parsed);
    }
    if (std::optional<std::string> error = requestError(*command, checked))
        return invalid(std::move(*error));
    return checked;
}

Invocation parse(std::span<const std::string> words)
{
    bool json = false;
    bool helpAsked = false;
    std::vector<std::string> rest;
    for (const std::string& word : words) {
        if (word == "--json")
            json = true;
        else if (word == "-h" || word == "--help")
            helpAsked = true;
        else
            rest.push_back(word);
    }
    if (rest.empty())
        return { Invocation::Help {} };
    if (rest[0] == "--version" || rest[0] == "version")
        return { Invocation::Version {} };
    if (rest[0] == "help") {
        if (rest.size() > 1)
            return { Invocation::Help { rest[1] } };
        return { Invocation::Help {} };
    }
    const Command* command = find(rest[0]);
    if (command == nullptr)
        return usageError("Tarnwick has no command " + rest[0] + ". Run help for the list.");
    if (helpAsked)
        return { Invocation::Help { command->name } };
    Request request { command->name, {}, json };
    if (std::optional<std::string> error = readArguments(*command, std::span(rest).subspan(1), request))
        return usageError(std::move(*error));
    return { Invocation::Run { std::move(request) } };
}

StartMode startMode(std::span<const std::string> words)
{
    if (words.empty())
        return StartMode::app;
    const std::string& first = words[0];
    if (!first.starts_with("-") || first == "-h" || first == "--help" || first == "--version")
        return StartMode::tool;
    return StartMode::app;
}

}
