#include "Platform/DirectoryStream.hpp"

#include "Scanning/TreeDate.hpp"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tarnwick::DirectoryStream {

namespace {

constexpr int folderFlags = O_RDONLY | O_NOFOLLOW | O_DIRECTORY | O_CLOEXEC;

int openOnce(int parentDescriptor, const std::string& name, const std::string& path, int extra)
{
    if (parentDescriptor >= 0)
        return openat(parentDescriptor, name.c_str(), folderFlags | extra);
    return ::open(path.c_str(), folderFlags | extra);
}

constexpr unsigned statxMask = STATX_TYPE | STATX_MODE | STATX_INO | STATX_SIZE | STATX_BLOCKS | STATX_MTIME | STATX_BTIME;
constexpr int statxFlags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC;

std::uint64_t deviceOf(const struct statx& info)
{
    return (static_cast<std::uint64_t>(info.stx_dev_major) << 32) | info.stx_dev_minor;
}

}

int open(int parentDescriptor, const std::string& name, const std::string& path)
{
    // O_NOATIME is refused for folders we do not own; reading them still must work.
    int descriptor = openOnce(parentDescriptor, name, path, O_NOATIME);
    if (descriptor < 0 && errno == EPERM)
        descriptor = openOnce(parentDescriptor, name, path, 0);
    return descriptor >= 0 ? descriptor : -errno;
}

long readBatch(int descriptor, std::span<std::byte> buffer)
{
    long result = syscall(SYS_getdents64, descriptor, buffer.data(), buffer.size());
    return result >= 0 ? result : -errno;
}

void describe(int folderDescriptor, const char* name, std::uint64_t folderDevice, ListedEntry& entry)
{
    struct statx info;
    if (statx(folderDescriptor, name, statxFlags, statxMask, &info) != 0) {
        entry.kind = NodeKind::other;
        entry.error = errno;
        entry.modified = TreeDate::noDate;
        entry.created = TreeDate::noDate;
        return;
    }
    entry.fileID = info.stx_ino;
    entry.device = deviceOf(info);
    entry.modified = (info.stx_mask & STATX_MTIME) ? TreeDate::encodeUnixSeconds(info.stx_mtime.tv_sec) : TreeDate::noDate;
    entry.created = (info.stx_mask & STATX_BTIME) ? TreeDate::encodeUnixSeconds(info.stx_btime.tv_sec) : TreeDate::noDate;
    switch (info.stx_mode & S_IFMT) {
    case S_IFDIR: {
        bool mountRoot = (info.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) && (info.stx_attributes & STATX_ATTR_MOUNT_ROOT);
        bool trigger = (info.stx_attributes_mask & STATX_ATTR_AUTOMOUNT) && (info.stx_attributes & STATX_ATTR_AUTOMOUNT);
        entry.kind = (mountRoot || trigger || entry.device != folderDevice) ? NodeKind::mountPoint : NodeKind::directory;
        return;
    }
    case S_IFREG:
        entry.kind = NodeKind::file;
        break;
    case S_IFLNK:
        entry.kind = NodeKind::symlink;
        break;
    default:
        entry.kind = NodeKind::other;
        break;
    }
    if (info.stx_mask & STATX_BLOCKS)
        entry.allocatedSize = static_cast<std::int64_t>(info.stx_blocks) * 512;
    if (info.stx_mask & STATX_SIZE)
        entry.logicalSize = static_cast<std::int64_t>(info.stx_size);
}

FolderFacts factsOf(int descriptor)
{
    FolderFacts facts;
    facts.modified = TreeDate::noDate;
    facts.created = TreeDate::noDate;
    struct statx info;
    if (statx(descriptor, "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, statxMask, &info) != 0)
        return facts;
    facts.device = deviceOf(info);
    facts.fileID = info.stx_ino;
    if (info.stx_mask & STATX_MTIME)
        facts.modified = TreeDate::encodeUnixSeconds(info.stx_mtime.tv_sec);
    if (info.stx_mask & STATX_BTIME)
        facts.created = TreeDate::encodeUnixSeconds(info.stx_btime.tv_sec);
    return facts;
}

}
