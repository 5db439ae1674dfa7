#pragma once

#include "Support/TempFolder.hpp"

#include <array>
#include <cstdlib>
#include <optional>
#include <string>

namespace tarnwick::fixtures {

// Points XDG_DATA_HOME and XDG_CACHE_HOME at a fresh temporary folder for as long as it
// lives, so that the app's socket, history and caches land there.
class DataHome {
public:
    DataHome()
    {
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (const char* previous = std::getenv(names[i]))
                m_previous[i] = previous;
        }
        setenv("XDG_DATA_HOME", (m_folder / "data").c_str(), 1);
        setenv("XDG_CACHE_HOME", (m_folder / "cache").c_str(), 1);
    }
    ~DataHome()
    {
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (m_previous[i])
                setenv(names[i], m_previous[i]->c_str(), 1);
            else
                unsetenv(names[i]);
        }
    }
    DataHome(const DataHome&) = delete;
    DataHome& operator=(const DataHome&) = delete;

    [[nodiscard]] const TempFolder& folder() const { return m_folder; }

private:
    static constexpr std::array<const char*, 2> names { "XDG_DATA_HOME", "XDG_CACHE_HOME" };
    TempFolder m_folder;
    std::array<std::optional<std::string>, 2> m_previous;
};

}
