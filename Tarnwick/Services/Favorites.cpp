#include "Favorites.hpp"

#include "Platform/UserDefaults.hpp"
#include "Scanning/ScopeResolver.hpp"

#include <algorithm>

namespace tarnwick {

namespace {

std::vector<std::string> pathsIn(const nlohmann::json& value)
{
    std::vector<std::string> paths;
    if (!value.is_array())
        return paths;
    for (const auto& entry : value) {
        if (entry.is_string() && std::find(paths.begin(), paths.end(), entry.get<std::string>()) == paths.end())
            paths.push_back(entry.get<std::string>());
    }
    return paths;
}

}

Favorites::Favorites(UserDefaults& defaults)
    : m_defaults(defaults)
{
}

std::vector<std::string> Favorites::paths() const
{
    std::optional<nlohmann::json> value = m_defaults.value(key);
    return value ? pathsIn(*value) : std::vector<std::string> {};
}

bool Favorites::add(const std::string& path)
{
    if (path.empty() || path.front() != '/')
        return false;
    std::string standard = ScopeResolver::standardizedPath(path);
    auto written = m_defaults.update([&](nlohmann::json& settings) {
        std::vector<std::string> paths = settings.contains(std::string(key)) ? pathsIn(settings[std::string(key)]) : std::vector<std::string> {};
        if (std::find(paths.begin(), paths.end(), standard) != paths.end())
            return;
        paths.push_back(standard);
        settings[std::string(key)] = paths;
    });
    return written.has_value();
}

bool Favorites::remove(const std::string& path)
{
    auto written = m_defaults.update([&](nlohmann::json& settings) {
        if (!settings.contains(std::string(key)))
            return;
        std::vector<std::string> paths = pathsIn(settings[std::string(key)]);
        auto found = std::find(paths.begin(), paths.end(), path);
        if (found == paths.end())
            return;
        paths.erase(found);
        settings[std::string(key)] = paths;
    });
    return written.has_value();
}

}
