#include "Platform/FileLock.hpp"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

namespace tarnwick {

namespace {

constexpr auto retryPause = std::chrono::milliseconds(20);

int openLockFile(const std::string& path)
{
    return ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
}

// flock, not fcntl locks: those belong to the process, so a second lock in the same process
// (a test, or the app's own check) would always succeed and closing any descriptor of the
// file would drop them.
bool lockNow(int descriptor)
{
    for (;;) {
        if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0)
            return true;
        if (errno != EINTR)
            return false;
    }
}

}

FileLock::FileLock(int descriptor)
    : m_descriptor(descriptor)
{
}

FileLock::~FileLock()
{
    ::close(m_descriptor);
}

std::unique_ptr<FileLock> FileLock::tryTake(const std::string& path)
{
    return takeWithin(path, std::chrono::milliseconds(0));
}

std::unique_ptr<FileLock> FileLock::takeWithin(const std::string& path, std::chrono::milliseconds timeout)
{
    int descriptor = openLockFile(path);
    if (descriptor < 0)
        return nullptr;
    auto deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        if (lockNow(descriptor))
            return std::unique_ptr<FileLock>(new FileLock(descriptor));
        if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= deadline)
            break;
        std::this_thread::sleep_for(retryPause);
    }
    ::close(descriptor);
    return nullptr;
}

bool FileLock::isHeld(const std::string& path)
{
    int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor < 0)
        return false;
    bool held = ::flock(descriptor, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    ::close(descriptor);
    return held;
}

}
