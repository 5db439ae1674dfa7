#include "Agent/AgentOutput.hpp"

#include <cstdio>
#include <string_view>

namespace tarnwick::AgentOutput {

namespace {

#ifdef TARNWICK_VERSION
constexpr std::string_view buildVersion = TARNWICK_VERSION;
#else
constexpr std::string_view buildVersion;
#endif

}

PrintedOutput print(const AgentResult& result, OutputMode mode)
{
    PrintedOutput printed;
    printed.exitStatus = result.exitStatus();
    if (mode == OutputMode::json) {
        JSONValue value = result.structured ? *result.structured : JSONValue::Object { { "message", result.text } };
        printed.standardOutput = JSONCoding::render(value, JSONLayout::pretty) + "\n";
    } else if (result.isError) {
        printed.standardError = result.text + "\n";
    } else {
        printed.standardOutput = result.text + "\n";
    }
    return printed;
}

int write(const PrintedOutput& printed)
{
    std::fwrite(printed.standardOutput.data(), 1, printed.standardOutput.size(), stdout);
    std::fflush(stdout);
    std::fwrite(printed.standardError.data(), 1, printed.standardError.size(), stderr);
    std::fflush(stderr);
    return printed.exitStatus;
}

std::string versionText()
{
    if (buildVersion.empty())
        return "Tarnwick dev";
    return "Tarnwick " + std::string(buildVersion);
}

}
