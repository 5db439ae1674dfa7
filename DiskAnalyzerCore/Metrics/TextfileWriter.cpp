#include "Metrics/TextfileWriter.hpp"

#include "Platform/WholeWrite.hpp"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnwick::TextfileWriter {

namespace {

constexpr mode_t fileMode = 0644;
// A temporary file older than this was left by a writer that was killed; a live writer's is
// seconds old.
constexpr std::chrono::minutes abandonedAfter { 10 };

std::string temporaryPrefix()
{
    return "." + std::string(fileName) + ".";
}

void sweepAbandoned(const std::string& folder)
{
    DIR* directory = ::opendir(folder.c_str());
    if (!directory)
        return;
    const auto now = std::chrono::system_clock::now();
    while (const dirent* entry = ::readdir(directory)) {
        std::string_view name = entry->d_name;
        if (!name.starts_with(temporaryPrefix()) || name.size() != temporaryPrefix().size() + 6)
            continue;
        struct stat info {};
        if (::fstatat(::dirfd(directory), entry->d_name, &info, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISREG(info.st_mode))
            continue;
        auto modified = std::chrono::system_clock::time_point(std::chrono::seconds(info.st_mtim.tv_sec));
        if (now - modified > abandonedAfter)
            ::unlinkat(::dirfd(directory), entry->d_name, 0);
    }
    ::closedir(directory);
}

// Why a file could not be made or written in a folder that is there.
Failure failure(const std::string& folder, int error)
{
    Failure::Case reason = Failure::Case::writeFailed;
    switch (error) {
    case ENOENT: // a file system that makes no files, such as /proc
    case EACCES:
    case EPERM:
    case EROFS:
        reason = Failure::Case::notWritable;
        break;
    case ENOSPC:
    case EDQUOT:
        reason = Failure::Case::noSpace;
        break;
    default:
        break;
    }
    return Failure { reason, folder, error };
}

}

std::string Failure::message() const
{
    std::string start = "Tarnwick couldn't write the metrics into " + folder + ": ";
    switch (reason) {
    case Case::missing:
        return start + "there is no such folder.";
    case Case::notAFolder:
        return start + "it is not a folder.";
    case Case::notWritable:
        return start + "the folder is read-only or not yours to write in.";
    case Case::noSpace:
        return start + "its disk is full.";
    case Case::writeFailed:
        break;
    }
    return start + std::strerror(systemError) + ".";
}

std::expected<std::string, Failure> write(const std::string& folder, std::string_view text)
{
    struct stat info {};
    if (::stat(folder.c_str(), &info) != 0) {
        int error = errno;
        if (error == ENOENT)
            return std::unexpected(Failure { Failure::Case::missing, folder, error });
        if (error == ENOTDIR)
            return std::unexpected(Failure { Failure::Case::notAFolder, folder, error });
        return std::unexpected(failure(folder, error));
    }
    if (!S_ISDIR(info.st_mode))
        return std::unexpected(Failure { Failure::Case::notAFolder, folder, ENOTDIR });
    const std::string target = folder + "/" + std::string(fileName);
    sweepAbandoned(folder);
    std::string temporary = folder + "/" + temporaryPrefix() + "XXXXXX";
    int descriptor = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (descriptor < 0)
        return std::unexpected(failure(folder, errno));
    bool written = ::fchmod(descriptor, fileMode) == 0 && writeWhole(descriptor, text) && ::fsync(descriptor) == 0;
    int error = errno;
    if (::close(descriptor) != 0 && written) {
        written = false;
        error = errno;
    }
    if (written && ::rename(temporary.c_str(), target.c_str()) != 0) {
        written = false;
        error = errno;
    }
    if (!written) {
        ::unlink(temporary.c_str());
        return std::unexpected(failure(folder, error));
    }
    return target;
}

}
