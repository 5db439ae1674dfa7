#pragma once

#include "Agent/JSONValue.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace tarnwick {

// The statuses the tool ends with of its own accord.
namespace ExitStatus {
inline constexpr int success = 0;
inline constexpr int failure = 1;
inline constexpr int usage = 2;
inline constexpr int appNotRunning = 4;
}

// One command's answer, whether the app or the tool computed it: a text for people (several
// lines, no final line feed), the same facts as JSON for --json, and whether it failed.
struct AgentResult {
    std::string text;
    std::optional<JSONValue> structured;
    bool isError = false;

    static AgentResult success(std::string text, std::optional<JSONValue> structured = std::nullopt);
    // text "CODE: message", structured { "error": code, "message": message }.
    static AgentResult failure(std::string_view code, std::string_view message);

    // Absent for a success; for a failure the "error" string of the structured object,
    // else "ERROR".
    [[nodiscard]] std::optional<std::string> errorCode() const;
    // 0 for a success, 4 for APP_NOT_RUNNING, 1 for any other failure.
    [[nodiscard]] int exitStatus() const;
    // Whether the text, and the pretty rendering of structured when present, each stay
    // below 8,192 UTF-8 bytes.
    [[nodiscard]] bool fits() const;

    // One line of compact JSON with the keys "isError", "structured" (left out when absent)
    // and "text"; the answer line of the socket.
    [[nodiscard]] std::string encoded() const;
    // Absent unless the line is a JSON object with a string "text" and a boolean "isError";
    // a null or missing "structured" is absent.
    static std::optional<AgentResult> decoded(std::string_view line);

    bool operator==(const AgentResult&) const = default;
};

}
