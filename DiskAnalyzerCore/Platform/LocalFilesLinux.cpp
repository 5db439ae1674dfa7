#include "Platform/LocalFiles.hpp"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnwick::LocalFiles {

std::expected<std::vector<Entry>, int> list(const std::string& folder)
{
    std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(folder.c_str()), closedir);
    if (!stream)
        return std::unexpected(errno);
    const int descriptor = dirfd(stream.get());
    std::vector<Entry> entries;
    errno = 0;
    while (const dirent* raw = readdir(stream.get())) {
        std::string name = raw->d_name;
        if (name == "." || name == "..")
            continue;
        bool isFolder = raw->d_type == DT_DIR;
        if (raw->d_type == DT_LNK || raw->d_type == DT_UNKNOWN) {
            struct stat info;
            isFolder = fstatat(descriptor, name.c_str(), &info, 0) == 0 && S_ISDIR(info.st_mode);
        }
        entries.push_back({ std::move(name), isFolder });
        errno = 0;
    }
    if (errno != 0)
        return std::unexpected(errno);
    return entries;
}

std::expected<std::string, int> read(const std::string& file, std::size_t maxBytes)
{
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0)
        return std::unexpected(errno);
    struct Closer {
        int descriptor;
        ~Closer() { ::close(descriptor); }
    } closer { descriptor };
    struct stat info;
    if (fstat(descriptor, &info) != 0)
        return std::unexpected(errno);
    // A fifo or a device in an applications folder would block or never end.
    if (!S_ISREG(info.st_mode))
        return std::unexpected(EINVAL);
    if (static_cast<std::size_t>(info.st_size) > maxBytes)
        return std::unexpected(EFBIG);
    std::string text;
    text.resize(static_cast<std::size_t>(info.st_size));
    std::size_t filled = 0;
    while (filled < text.size()) {
        ssize_t got = ::read(descriptor, text.data() + filled, text.size() - filled);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return std::unexpected(errno);
        if (got == 0)
            break;
        filled += static_cast<std::size_t>(got);
    }
    text.resize(filled);
    return text;
}

}
