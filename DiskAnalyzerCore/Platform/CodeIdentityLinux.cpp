#include "Platform/CodeIdentity.hpp"

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

namespace tarnwick::CodeIdentity {

namespace {

std::optional<Signer> signerOf(const std::string& executable, uid_t user)
{
    // stat follows /proc/PID/exe to the very file the process runs, even if it was renamed.
    struct stat status;
    if (::stat(executable.c_str(), &status) != 0)
        return std::nullopt;
    return Signer { static_cast<std::uint32_t>(user), static_cast<std::uint64_t>(status.st_dev),
        static_cast<std::uint64_t>(status.st_ino) };
}

}

std::optional<Signer> own()
{
    return signerOf("/proc/self/exe", ::getuid());
}

std::optional<Signer> peer(int socketDescriptor)
{
    struct ucred credentials { };
    socklen_t length = sizeof credentials;
    if (::getsockopt(socketDescriptor, SOL_SOCKET, SO_PEERCRED, &credentials, &length) != 0 || length != sizeof credentials)
        return std::nullopt;
    if (credentials.pid <= 0)
        return std::nullopt;
    return signerOf("/proc/" + std::to_string(credentials.pid) + "/exe", credentials.uid);
}

std::optional<Signer> ofExecutable(const std::string& path)
{
    return signerOf(path, ::getuid());
}

std::optional<std::string> ownExecutablePath()
{
    std::vector<char> buffer(4096);
    for (;;) {
        ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
        if (length < 0)
            return std::nullopt;
        if (static_cast<std::size_t>(length) < buffer.size())
            return std::string(buffer.data(), static_cast<std::size_t>(length));
        buffer.resize(buffer.size() * 2);
    }
}

}
