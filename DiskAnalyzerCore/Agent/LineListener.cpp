#include "Agent/LineListener.hpp"

#include <cerrno>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnwick {

namespace {

constexpr int backlog = 8;

}

LineListener::LineListener(int descriptor, std::string path, std::uint64_t inode)
    : m_descriptor(descriptor)
    , m_path(std::move(path))
    , m_inode(inode)
{
}

LineListener::~LineListener()
{
    close();
}

std::unique_ptr<LineListener> LineListener::create(const std::string& path)
{
    std::optional<sockaddr_un> address = unixSocketAddress(path);
    if (!address)
        return nullptr;
    ::unlink(path.c_str());
    int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        return nullptr;
    struct stat status;
    if (::bind(descriptor, reinterpret_cast<const sockaddr*>(&*address), sizeof *address) != 0
        || ::chmod(path.c_str(), 0600) != 0 || ::listen(descriptor, backlog) != 0 || ::stat(path.c_str(), &status) != 0) {
        ::close(descriptor);
        return nullptr;
    }
    return std::unique_ptr<LineListener>(new LineListener(descriptor, path, static_cast<std::uint64_t>(status.st_ino)));
}

std::unique_ptr<LineConnection> LineListener::accept()
{
    if (m_descriptor < 0)
        return nullptr;
    for (;;) {
        int descriptor = ::accept4(m_descriptor, nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor >= 0)
            return std::make_unique<LineConnection>(descriptor);
        if (errno != EINTR)
            return nullptr;
    }
}

void LineListener::stopAccepting()
{
    if (m_descriptor >= 0)
        ::shutdown(m_descriptor, SHUT_RDWR);
}

void LineListener::close()
{
    if (m_descriptor < 0)
        return;
    ::shutdown(m_descriptor, SHUT_RDWR);
    ::close(m_descriptor);
    m_descriptor = -1;
    struct stat status;
    if (::stat(m_path.c_str(), &status) == 0 && static_cast<std::uint64_t>(status.st_ino) == m_inode)
        ::unlink(m_path.c_str());
}

}
