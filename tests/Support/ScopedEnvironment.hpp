#pragma once

#include <cstdlib>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace tarnwick::fixtures {

// Sets environment variables (or unsets those given no value) for as long as it lives, and
// puts the old values back afterwards.
class ScopedEnvironment {
public:
    ScopedEnvironment(std::initializer_list<std::pair<const char*, std::optional<std::string>>> values)
    {
        for (const auto& [name, value] : values) {
            const char* old = std::getenv(name);
            m_old[name] = old ? std::optional<std::string>(old) : std::nullopt;
            if (value)
                setenv(name, value->c_str(), 1);
            else
                unsetenv(name);
        }
    }
    ~ScopedEnvironment()
    {
        for (const auto& [name, value] : m_old) {
            if (value)
                setenv(name.c_str(), value->c_str(), 1);
            else
                unsetenv(name.c_str());
        }
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    std::map<std::string, std::optional<std::string>> m_old;
};

}
