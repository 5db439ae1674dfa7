#pragma once

#include "Agent/LineConnection.hpp"

#include <cstdint>
#include <memory>
#include <string>

namespace tarnwick {

// A listening Unix-domain socket at a path, readable and writable by this user only.
class LineListener {
public:
    ~LineListener();
    LineListener(const LineListener&) = delete;
    LineListener& operator=(const LineListener&) = delete;

    // Replaces whatever socket file a crashed or still running instance left at path. Null
    // when there is no address for the path or the socket cannot be bound there.
    static std::unique_ptr<LineListener> create(const std::string& path);

    // The next connection; a signal does not end the wait. Null once the listener has
    // stopped accepting, or on a failure.
    std::unique_ptr<LineConnection> accept();
    // Wakes an accept blocked on another thread and makes every later one fail.
    void stopAccepting();
    // Stops accepting, closes the socket and removes the socket file, unless the file is no
    // longer the one created here (a later instance has taken the path over). Idempotent.
    void close();

    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] std::uint64_t inode() const { return m_inode; }

private:
    LineListener(int descriptor, std::string path, std::uint64_t inode);

    int m_descriptor;
    std::string m_path;
    std::uint64_t m_inode; // of the socket file right after it was created
};

}
