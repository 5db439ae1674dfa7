#include "Agent/AgentResult.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Agent/OutputLimit.hpp"

#include <nlohmann/json.hpp>

namespace tarnwick {

AgentResult AgentResult::success(std::string text, std::optional<JSONValue> structured)
{
    return { std::move(text), std::move(structured), false };
}

AgentResult AgentResult::failure(std::string_view code, std::string_view message)
{
    std::string text = std::string(code) + ": " + std::string(message);
    JSONValue structured = JSONValue::Object { { "error", code }, { "message", message } };
    return { std::move(text), std::move(structured), true };
}

std::optional<std::string> AgentResult::errorCode() const
{
    if (!isError)
        return std::nullopt;
    if (structured) {
        const JSONValue* code = structured->member("error");
        if (code != nullptr && code->stringValue() != nullptr)
            return *code->stringValue();
    }
    return std::string(AgentErrorCode::generic);
}

int AgentResult::exitStatus() const
{
    std::optional<std::string> code = errorCode();
    if (!code)
        return ExitStatus::success;
    return *code == AgentErrorCode::appNotRunning ? ExitStatus::appNotRunning : ExitStatus::failure;
}

bool AgentResult::fits() const
{
    if (text.size() >= OutputLimit::bytes)
        return false;
    return !structured || JSONCoding::render(*structured, JSONLayout::pretty).size() < OutputLimit::bytes;
}

std::string AgentResult::encoded() const
{
    nlohmann::json json = { { "text", text }, { "isError", isError } };
    if (structured) {
        // A float JSON cannot hold goes over as null, as it would print.
        std::optional<nlohmann::json> value = JSONCoding::toJSON(*structured);
        json["structured"] = value ? std::move(*value) : nlohmann::json(nullptr);
    }
    return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::optional<AgentResult> AgentResult::decoded(std::string_view line)
{
    nlohmann::json json = nlohmann::json::parse(line.begin(), line.end(), nullptr, false);
    if (!json.is_object())
        return std::nullopt;
    auto text = json.find("text");
    auto isError = json.find("isError");
    if (text == json.end() || !text->is_string() || isError == json.end() || !isError->is_boolean())
        return std::nullopt;
    AgentResult result { text->get<std::string>(), std::nullopt, isError->get<bool>() };
    auto structured = json.find("structured");
    if (structured != json.end() && !structured->is_null()) {
        result.structured = JSONCoding::fromJSON(*structured);
        if (!result.structured)
            return std::nullopt;
    }
    return result;
}

}
