#include "Agent/LineConnection.hpp"

#include "Support/UnicodeNames.hpp"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

namespace tarnwick {

namespace {

constexpr std::size_t longestPath = 103;
constexpr std::size_t readSize = 65'536;

}

std::optional<sockaddr_un> unixSocketAddress(std::string_view path)
{
    if (path.empty() || path.size() > longestPath)
        return std::nullopt;
    sockaddr_un address;
    std::memset(&address, 0, sizeof address);
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    return address;
}

LineConnection::LineConnection(int descriptor)
    : m_descriptor(descriptor)
{
}

LineConnection::~LineConnection()
{
    ::close(m_descriptor);
}

std::unique_ptr<LineConnection> LineConnection::connect(const std::string& path)
{
    std::optional<sockaddr_un> address = unixSocketAddress(path);
    if (!address)
        return nullptr;
    int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        return nullptr;
    int status;
    do {
        status = ::connect(descriptor, reinterpret_cast<const sockaddr*>(&*address), sizeof *address);
    } while (status != 0 && errno == EINTR);
    if (status != 0) {
        ::close(descriptor);
        return nullptr;
    }
    return std::make_unique<LineConnection>(descriptor);
}

std::optional<std::string> LineConnection::readLine()
{
    std::lock_guard guard(m_lock);
    for (;;) {
        std::size_t end = m_pending.find('\n', m_searched);
        if (end != std::string::npos) {
            std::string line = UnicodeNames::repaired(std::string_view(m_pending).substr(0, end));
            m_pending.erase(0, end + 1);
            m_searched = 0;
            return line;
        }
        m_searched = m_pending.size();
        char buffer[readSize];
        ssize_t count = ::read(m_descriptor, buffer, sizeof buffer);
        if (count == 0)
            return std::nullopt;
        if (count < 0) {
            if (errno == EINTR)
                continue;
            return std::nullopt;
        }
        m_pending.append(buffer, static_cast<std::size_t>(count));
    }
}

bool LineConnection::writeLine(std::string_view text)
{
    std::string bytes(text);
    bytes.push_back('\n');
    std::size_t written = 0;
    while (written < bytes.size()) {
        // MSG_NOSIGNAL: a peer that has gone makes the write fail instead of killing us.
        ssize_t count = ::send(m_descriptor, bytes.data() + written, bytes.size() - written, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        written += static_cast<std::size_t>(count);
    }
    return true;
}

void LineConnection::shutdown()
{
    ::shutdown(m_descriptor, SHUT_RDWR);
}

}
