#pragma once

#include "Support/ScopedEnvironment.hpp"
#include "Support/TempFolder.hpp"

namespace tarnwick::fixtures {

// Points XDG_DATA_HOME and XDG_CACHE_HOME at a fresh temporary folder for as long as it
// lives, so that the app's socket, history and caches land there.
class DataHome {
public:
    [[nodiscard]] const TempFolder& folder() const { return m_folder; }

private:
    TempFolder m_folder;
    ScopedEnvironment m_environment { { "XDG_DATA_HOME", m_folder / "data" }, { "XDG_CACHE_HOME", m_folder / "cache" } };
};

}
