#include "Agent/AgentRequest.hpp"

#include <nlohmann/json.hpp>

namespace tarnwick::AgentCommands {

std::string Request::encoded() const
{
    nlohmann::json document = { { "command", command }, { "arguments", arguments }, { "json", json } };
    return document.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::optional<Request> Request::decoded(std::string_view line)
{
    nlohmann::json json = nlohmann::json::parse(line.begin(), line.end(), nullptr, false);
    if (!json.is_object())
        return std::nullopt;
    auto command = json.find("command");
    auto arguments = json.find("arguments");
    auto flag = json.find("json");
    if (command == json.end() || !command->is_string() || arguments == json.end() || !arguments->is_object()
        || flag == json.end() || !flag->is_boolean())
        return std::nullopt;
    Request request { command->get<std::string>(), {}, flag->get<bool>() };
    for (const auto& [key, value] : arguments->items()) {
        if (!value.is_string())
            return std::nullopt;
        request.arguments.emplace(key, value.get<std::string>());
    }
    return request;
}

}
