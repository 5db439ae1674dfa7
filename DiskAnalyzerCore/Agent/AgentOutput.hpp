#pragma once

#include "Agent/AgentResult.hpp"

#include <string>

namespace tarnwick {

enum class OutputMode { text, json };

// What the tool writes for one answer and the status it then exits with.
struct PrintedOutput {
    std::string standardOutput;
    std::string standardError;
    int exitStatus = ExitStatus::success;

    bool operator==(const PrintedOutput&) const = default;
};

namespace AgentOutput {

// With --json the pretty structured value, or { "message": text } when there is none, goes to
// standard output even for a failure (agents read one stream). As text, a success goes to
// standard output and a failure to standard error. Each ends with a line feed.
PrintedOutput print(const AgentResult& result, OutputMode mode);

// Writes both streams of printed and returns its exit status.
int write(const PrintedOutput& printed);

// "Tarnwick 0.1.0", or "Tarnwick dev" for a build without a version.
std::string versionText();

}

}
