#include "DesktopHost.hpp"

#include "Platform/SystemLog.hpp"

#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>

namespace tarnwick::DesktopLoader {

namespace {

// The build folder keeps the library beside the executable; an installed executable finds
// it in its private library folder, given relative to the executable's folder so that an
// unpacked or relocated tree works as well as /usr.
#ifndef TARNWICK_DESKTOP_MODULE_DIR
#define TARNWICK_DESKTOP_MODULE_DIR "."
#endif

std::filesystem::path libraryBeside(const std::filesystem::path& executable)
{
    std::filesystem::path folder = executable.parent_path();
    std::filesystem::path built = folder / desktopLibraryName;
    std::error_code error;
    if (std::filesystem::exists(built, error))
        return built;
    return (folder / TARNWICK_DESKTOP_MODULE_DIR / desktopLibraryName).lexically_normal();
}

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
    std::string library = libraryBeside(executable).string();
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
