#include "Platform/DirectoryStream.hpp"

#include <atomic>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tarnwick::DirectoryStream {

static_assert(isDescriptorShortage(EMFILE) && isDescriptorShortage(ENFILE));

namespace {

constexpr int folderFlags = O_RDONLY | O_NOFOLLOW | O_DIRECTORY | O_CLOEXEC;

int openOnce(int parentDescriptor, const char* name, const char* path, int extra)
{
    if (parentDescriptor >= 0)
        return openat(parentDescriptor, name, folderFlags | extra);
    return ::open(path, folderFlags | extra);
}

// One step of openBelow: a path the kernel takes in one call. Returns fd or -errno.
int openStretch(int baseDescriptor, const char* relativePath, int flags)
{
    static std::atomic<bool> hasOpenat2 { true };
    if (hasOpenat2.load(std::memory_order_relaxed)) {
        open_how how {};
        how.flags = static_cast<std::uint64_t>(flags);
        how.resolve = RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
        long descriptor = syscall(SYS_openat2, baseDescriptor, relativePath, &how, sizeof how);
        if (descriptor >= 0)
            return static_cast<int>(descriptor);
        if (errno != ENOSYS)
            return -errno;
        hasOpenat2.store(false, std::memory_order_relaxed); // an old kernel: the last step still refuses a link
    }
    int descriptor = openat(baseDescriptor, relativePath, flags);
    return descriptor >= 0 ? descriptor : -errno;
}

constexpr unsigned statxMask = STATX_TYPE | STATX_MODE | STATX_NLINK | STATX_INO | STATX_SIZE | STATX_BLOCKS | STATX_MTIME | STATX_BTIME;
constexpr int statxFlags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC;

std::uint64_t deviceOf(const struct statx& info)
{
    return (static_cast<std::uint64_t>(info.stx_dev_major) << 32) | info.stx_dev_minor;
}

EntryFacts factsFrom(const struct statx& info)
{
    EntryFacts facts;
    facts.fileID = info.stx_ino;
    facts.device = deviceOf(info);
    if (info.stx_mask & STATX_NLINK)
        facts.linkCount = info.stx_nlink;
    if (info.stx_mask & STATX_MTIME)
        facts.modifiedUnixSeconds = info.stx_mtime.tv_sec;
    if (info.stx_mask & STATX_BTIME)
        facts.createdUnixSeconds = info.stx_btime.tv_sec;
    switch (info.stx_mode & S_IFMT) {
    case S_IFDIR:
        facts.type = EntryFacts::Type::directory;
        break;
    case S_IFREG:
        facts.type = EntryFacts::Type::file;
        break;
    case S_IFLNK:
        facts.type = EntryFacts::Type::symlink;
        break;
    default:
        facts.type = EntryFacts::Type::other;
        break;
    }
    facts.hasAllocatedSize = info.stx_mask & STATX_BLOCKS;
    if (facts.hasAllocatedSize)
        facts.allocatedSize = static_cast<std::int64_t>(info.stx_blocks) * 512;
    facts.hasLogicalSize = info.stx_mask & STATX_SIZE;
    if (facts.hasLogicalSize)
        facts.logicalSize = static_cast<std::int64_t>(info.stx_size);
    return facts;
}

}

int open(int parentDescriptor, const char* name, const char* path)
{
    // O_NOATIME is refused for folders we do not own; reading them still must work.
    int descriptor = openOnce(parentDescriptor, name, path, O_NOATIME);
    if (descriptor < 0 && errno == EPERM)
        descriptor = openOnce(parentDescriptor, name, path, 0);
    return descriptor >= 0 ? descriptor : -errno;
}

int openBelow(int baseDescriptor, const char* relativePath)
{
    // Each call takes less than PATH_MAX bytes: cut at a separator, open that stretch as a
    // bare reference, and go on from it.
    constexpr std::size_t stretch = PATH_MAX - 256;
    std::string_view rest = relativePath;
    int base = baseDescriptor;
    int owned = -1;
    while (rest.size() >= stretch) {
        std::size_t cut = rest.rfind('/', stretch);
        if (cut == std::string_view::npos || cut == 0) {
            if (owned >= 0)
                close(owned);
            return -ENAMETOOLONG;
        }
        int next = openStretch(base, std::string(rest.substr(0, cut)).c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (owned >= 0)
            close(owned);
        if (next < 0)
            return next;
        base = owned = next;
        rest.remove_prefix(cut + 1);
    }
    // What is left is the end of relativePath, so it ends with its terminating zero.
    const char* last = rest.data();
    int descriptor = openStretch(base, last, folderFlags | O_NOATIME);
    if (descriptor == -EPERM)
        descriptor = openStretch(base, last, folderFlags);
    if (owned >= 0)
        close(owned);
    return descriptor;
}

long readBatch(int descriptor, std::span<std::byte> buffer)
{
    long result = syscall(SYS_getdents64, descriptor, buffer.data(), buffer.size());
    return result >= 0 ? result : -errno;
}

EntryFacts describe(int folderDescriptor, const char* name, std::uint64_t folderDevice)
{
    struct statx info;
    if (statx(folderDescriptor, name, statxFlags, statxMask, &info) != 0) {
        EntryFacts facts;
        facts.error = errno;
        return facts;
    }
    EntryFacts facts = factsFrom(info);
    if (facts.type == EntryFacts::Type::directory) {
        bool mountRoot = (info.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) && (info.stx_attributes & STATX_ATTR_MOUNT_ROOT);
        bool trigger = (info.stx_attributes_mask & STATX_ATTR_AUTOMOUNT) && (info.stx_attributes & STATX_ATTR_AUTOMOUNT);
        facts.isMountPoint = mountRoot || trigger || facts.device != folderDevice;
    }
    return facts;
}

EntryFacts factsOf(int descriptor)
{
    struct statx info;
    if (statx(descriptor, "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, statxMask, &info) != 0) {
        EntryFacts facts;
        facts.error = errno;
        return facts;
    }
    return factsFrom(info);
}

}
