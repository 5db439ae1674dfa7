#include "Agent/ToolName.hpp"

#include "Platform/CodeIdentity.hpp"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <unistd.h>

namespace tarnwick::ToolName {

namespace {

bool isSafeInShell(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
        || std::string_view("@%+=:,./-_").find(c) != std::string_view::npos;
}

bool equalsIgnoringCase(std::string_view a, std::string_view b)
{
    auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [&](char x, char y) { return lower(x) == lower(y); });
}

// The file the shell runs for the bare name: the first executable "tarnwick" along the search
// path, an empty entry meaning the current folder.
std::optional<std::string> lookUp(std::string_view searchPath)
{
    std::size_t start = 0;
    while (start <= searchPath.size()) {
        std::size_t end = searchPath.find(':', start);
        if (end == std::string_view::npos)
            end = searchPath.size();
        std::string folder(searchPath.substr(start, end - start));
        std::string candidate = (folder.empty() ? std::string(".") : folder) + "/" + std::string(bareName);
        if (::access(candidate.c_str(), X_OK) == 0)
            return candidate;
        start = end + 1;
    }
    return std::nullopt;
}

}

std::string choose(std::string_view programPath, const std::string& ownExecutable, std::string_view searchPath)
{
    // A program path without "/" is a bare name that the shell found along the search path.
    if (programPath.find('/') == std::string_view::npos && equalsIgnoringCase(programPath, bareName)) {
        std::optional<std::string> found = lookUp(searchPath);
        if (found) {
            std::optional<CodeIdentity::Signer> foundIdentity = CodeIdentity::ofExecutable(*found);
            if (foundIdentity && foundIdentity == CodeIdentity::ofExecutable(ownExecutable))
                return std::string(bareName);
        }
    }
    return shellQuoted(ownExecutable);
}

std::string current(std::string_view programPath)
{
    const char* searchPath = std::getenv("PATH");
    std::optional<std::string> executable = CodeIdentity::ownExecutablePath();
    return choose(programPath, executable.value_or(std::string(programPath)), searchPath != nullptr ? searchPath : "");
}

std::string shellQuoted(std::string_view text)
{
    if (!text.empty() && std::all_of(text.begin(), text.end(), isSafeInShell))
        return std::string(text);
    std::string quoted = "'";
    for (char c : text) {
        if (c == '\'')
            quoted += "'\\''";
        else
            quoted += c;
    }
    return quoted + "'";
}

}
