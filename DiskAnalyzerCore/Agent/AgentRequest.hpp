#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tarnwick::AgentCommands {

// A parsed command as it travels from the tool to the app: the command's name, the path under
// "path" and every option under its key, each value as text, and whether --json was asked.
//
// On the socket it is one line of compact JSON, for example
//   {"arguments":{"limit":"30","path":"~/Projects"},"command":"summary","json":true}
struct Request {
    std::string command;
    std::map<std::string, std::string> arguments;
    bool json = false;

    [[nodiscard]] std::string encoded() const;
    // Absent unless the line is a JSON object with a string "command", an object "arguments"
    // of strings and a boolean "json"; other keys are ignored.
    static std::optional<Request> decoded(std::string_view line);

    bool operator==(const Request&) const = default;
};

}
