#include "Platform/SystemLog.hpp"

#include <cstdio>
#include <mutex>
#include <string>
#include <syslog.h>
#include <unistd.h>

namespace tarnwick::SystemLog {

void write(Level level, std::string_view category, std::string_view message)
{
    static std::once_flag opened;
    std::call_once(opened, [] { ::openlog("tarnwick", LOG_PID, LOG_USER); });
    std::string line = std::string(category) + ": " + std::string(message);
    ::syslog(level == Level::error ? LOG_ERR : LOG_INFO, "%s", line.c_str());
    if (::isatty(STDERR_FILENO) == 1)
        std::fprintf(stderr, "%s\n", line.c_str());
}

}
