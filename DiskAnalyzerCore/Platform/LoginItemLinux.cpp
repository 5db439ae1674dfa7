#include "Platform/LoginItem.hpp"

#include "Platform/AppLauncher.hpp"
#include "Platform/UserFolders.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnwick::LoginItem {

std::string Error::text() const
{
    return "Tarnwick couldn't be set to open at login: " + std::string(std::strerror(code)) + " (" + path + ").";
}

std::string standardPath()
{
    // The configuration folder is Tarnwick's own folder inside the user's; autostart sits beside it.
    std::string config = UserFolders::configFolder();
    std::string base = config.substr(0, config.rfind('/'));
    return base + "/autostart/tarnwick.desktop";
}

std::string quotedArgument(std::string_view argument)
{
    bool plain = !argument.empty();
    for (char c : argument) {
        if (std::strchr(" \t\n\"'\\><~|&;$*?#()`=%", c) != nullptr)
            plain = false;
    }
    if (plain)
        return std::string(argument);
    // Inside double quotes, the Exec key escapes ", `, $ and \ with a backslash; the desktop
    // file's string escaping then doubles every backslash once more.
    std::string quoted = "\"";
    for (char c : argument) {
        if (c == '"' || c == '`' || c == '$')
            quoted += "\\\\";
        else if (c == '\\')
            quoted += "\\\\\\";
        if (c == '%')
            quoted += '%';
        quoted += c;
    }
    return quoted + "\"";
}

std::string entryText(std::string_view executable)
{
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Tarnwick\n"
           "Comment=Takes a snapshot of your disks once a day\n"
           "Exec=" + quotedArgument(executable) + " " + AppLauncher::backgroundWord + "\n"
           "Terminal=false\n"
           "NoDisplay=true\n"
           "X-GNOME-Autostart-enabled=true\n";
}

std::expected<void, Error> install(const std::string& path, std::string_view executable)
{
    std::string folder = path.substr(0, path.rfind('/'));
    if (!UserFolders::ensureFolder(folder))
        return std::unexpected(Error { folder, errno });
    std::string temporary = path + ".tmp-" + std::to_string(::getpid());
    int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return std::unexpected(Error { temporary, errno });
    std::string text = entryText(executable);
    bool written = ::write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size()) && ::fsync(fd) == 0;
    int writeError = errno;
    ::close(fd);
    if (!written || ::rename(temporary.c_str(), path.c_str()) != 0) {
        int error = written ? errno : writeError;
        ::unlink(temporary.c_str());
        return std::unexpected(Error { path, error });
    }
    return {};
}

std::expected<void, Error> remove(const std::string& path)
{
    if (::unlink(path.c_str()) != 0 && errno != ENOENT)
        return std::unexpected(Error { path, errno });
    return {};
}

bool isInstalled(const std::string& path)
{
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

}
