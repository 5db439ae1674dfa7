#include "DesktopHost.hpp"

#include "Platform/SystemLog.hpp"

#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>

namespace tarnwick::DesktopLoader {

namespace {

bool namesADisplay()
{
    for (const char* name : { "QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY" }) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0')
            return true;
    }
    return false;
}

}

std::unique_ptr<DesktopHost> start(MainExecutor& executor, const std::vector<std::string>& words)
{
    if (!namesADisplay())
        return nullptr;
    std::error_code error;
    std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", error);
    std::string library = (executable.parent_path() / desktopLibraryName).string();
    void* handle = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        SystemLog::write(SystemLog::Level::error, "app", std::string("no window: ") + dlerror());
        return nullptr;
    }
    // The library stays loaded for the life of the process: its code runs until the end.
    auto startDesktop = reinterpret_cast<DesktopStart>(dlsym(handle, desktopStartSymbol));
    if (startDesktop == nullptr) {
        SystemLog::write(SystemLog::Level::error, "app", library + " has no " + desktopStartSymbol);
        return nullptr;
    }
    return std::unique_ptr<DesktopHost>(startDesktop(executor, words));
}

}
