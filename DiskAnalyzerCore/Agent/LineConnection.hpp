#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <sys/un.h>

namespace tarnwick {

// A Unix-domain address for a socket file. Absent for an empty path or one of more than
// 103 bytes, the most both ends of the protocol can hold; nothing can then bind or connect.
std::optional<sockaddr_un> unixSocketAddress(std::string_view path);

// One connected stream socket that carries lines: one JSON document per line each way. The
// descriptor is closed when the connection goes.
class LineConnection {
public:
    // Takes over descriptor.
    explicit LineConnection(int descriptor);
    ~LineConnection();
    LineConnection(const LineConnection&) = delete;
    LineConnection& operator=(const LineConnection&) = delete;

    // Null when there is no address for the path or nobody listens there.
    static std::unique_ptr<LineConnection> connect(const std::string& path);

    // The next line without its line feed, invalid UTF-8 replaced by U+FFFD. Absent at the
    // end of the stream or on an error; bytes after the last line feed are never returned.
    // Lines have no length limit. Reads are serialised.
    std::optional<std::string> readLine();
    // The text and one line feed, all of it. False when the peer has gone (without a
    // SIGPIPE) or the socket failed.
    bool writeLine(std::string_view text);

    // Ends both directions, which wakes a read blocked on another thread.
    void shutdown();

    [[nodiscard]] int descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
    std::string m_pending;       // read but not yet returned as a line
    std::size_t m_searched = 0;  // bytes of m_pending known to hold no line feed
    std::mutex m_lock;           // held for the whole of each line read
};

}
