#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace tarnwick {

// An exclusive advisory lock on a file, held until the object goes. The kernel lets it go
// when the process ends in any way, so a crashed holder never leaves it taken. The
// descriptor is closed on exec: a program started by the holder does not hold it too.
class FileLock {
public:
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    // The lock when nobody else holds it, creating the file (mode 0600) if need be; absent
    // when another holds it or the file cannot be opened.
    static std::unique_ptr<FileLock> tryTake(const std::string& path);
    // Waits for the lock up to timeout; absent when it stayed taken or cannot be opened.
    static std::unique_ptr<FileLock> takeWithin(const std::string& path, std::chrono::milliseconds timeout);
    // Whether another process (or another lock in this one) holds it now.
    static bool isHeld(const std::string& path);

private:
    explicit FileLock(int descriptor);

    int m_descriptor;
};

}
