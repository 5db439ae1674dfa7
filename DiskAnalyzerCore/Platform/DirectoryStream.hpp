#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>

namespace tarnwick::DirectoryStream {

// Opens a folder read-only without following links and without updating its access
// time where the system lets us; relative to the parent's descriptor when there is one.
// Returns the descriptor, or -errno.
int open(int parentDescriptor, const char* name, const char* path);

// Opens the folder at relativePath below an open folder, refusing a link at any step, so a
// folder swapped for a link while a scan runs never leads outside it. Paths longer than the
// system takes in one call are opened a stretch at a time. Returns the descriptor, or -errno.
int openBelow(int baseDescriptor, const char* relativePath);

// Whether an error number says the process or the system ran out of descriptors: a
// passing shortage, never a property of the folder.
constexpr bool isDescriptorShortage(int error);

// One read of raw entries into buffer: the number of bytes, 0 at the end, or -errno.
long readBatch(int descriptor, std::span<std::byte> buffer);

// Calls visit(name) for every entry of a raw batch except "." and "..". Names are
// zero-terminated in the buffer.
template <typename Visit>
void forEachName(std::span<const std::byte> batch, Visit visit);

// What one metadata read tells of an entry, never following a link.
struct EntryFacts {
    enum class Type : std::uint8_t { directory, file, symlink, other };
    static constexpr std::int64_t noTime = std::numeric_limits<std::int64_t>::min();

    Type type = Type::other;
    // A folder where another file system is mounted, an automount trigger, or one on another
    // device than the folder it was listed in.
    bool isMountPoint = false;
    bool hasAllocatedSize = false;
    bool hasLogicalSize = false;
    std::int64_t allocatedSize = 0; // blocks in use, in bytes (folders too)
    std::int64_t logicalSize = 0;
    std::uint64_t fileID = 0;
    std::uint64_t device = 0;
    std::uint32_t linkCount = 1;
    std::int64_t modifiedUnixSeconds = noTime;
    std::int64_t createdUnixSeconds = noTime;
    int error = 0; // the entry's own read error, 0 when none
};

// Reads one entry's metadata relative to its folder. folderDevice is the device of the
// folder being listed, to spot mount points.
EntryFacts describe(int folderDescriptor, const char* name, std::uint64_t folderDevice);

// The same facts of an open folder itself, for the scan root.
EntryFacts factsOf(int descriptor);

// The record layout getdents64 fills in.
struct RawEntry {
    std::uint64_t inode;
    std::int64_t offset;
    unsigned short length;
    unsigned char type;
    char name[1];
};

template <typename Visit>
void forEachName(std::span<const std::byte> batch, Visit visit)
{
    std::size_t position = 0;
    while (position < batch.size()) {
        const auto* raw = reinterpret_cast<const RawEntry*>(batch.data() + position);
        position += raw->length;
        const char* name = raw->name;
        if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)))
            continue;
        visit(name);
    }
}

constexpr bool isDescriptorShortage(int error)
{
    return error == 24 /* EMFILE */ || error == 23 /* ENFILE */;
}

}
