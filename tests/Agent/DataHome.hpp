#pragma once

#include "Support/TempFolder.hpp"

#include <cstdlib>
#include <optional>
#include <string>

namespace tarnwick::fixtures {

// Points XDG_DATA_HOME at a fresh temporary folder for as long as it lives, so that the app's
// socket and history land there.
class DataHome {
public:
    DataHome()
    {
        if (const char* previous = std::getenv("XDG_DATA_HOME"))
            m_previous = previous;
        setenv("XDG_DATA_HOME", (m_folder / "data").c_str(), 1);
    }
    ~DataHome()
    {
        if (m_previous)
            setenv("XDG_DATA_HOME", m_previous->c_str(), 1);
        else
            unsetenv("XDG_DATA_HOME");
    }
    DataHome(const DataHome&) = delete;
    DataHome& operator=(const DataHome&) = delete;

    [[nodiscard]] const TempFolder& folder() const { return m_folder; }

private:
    TempFolder m_folder;
    std::optional<std::string> m_previous;
};

}
