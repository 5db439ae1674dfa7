#pragma once

#include "Scanning/DirectoryListing.hpp"

#include <cstddef>
#include <span>
#include <string>

namespace tarnwick::DirectoryStream {

// Opens a folder read-only without following links and without updating its access
// time where the system lets us; relative to the parent's descriptor when there is one.
// Returns the descriptor, or -errno.
int open(int parentDescriptor, const std::string& name, const std::string& path);

// One read of raw entries into buffer: the number of bytes, 0 at the end, or -errno.
long readBatch(int descriptor, std::span<std::byte> buffer);

// Calls visit(name) for every entry of a raw batch except "." and "..". Names are
// zero-terminated in the buffer.
template <typename Visit>
void forEachName(std::span<const std::byte> batch, Visit visit);

// Reads one entry's metadata relative to its folder (never following a link) into
// entry: kind, sizes, dates, file identifier, device, or its error number.
void describe(int folderDescriptor, const char* name, std::uint64_t folderDevice, ListedEntry& entry);

// The device and own dates of an open folder, for the scan root.
struct FolderFacts {
    std::uint64_t device = 0;
    std::uint64_t fileID = 0;
    std::int32_t modified = 0;
    std::int32_t created = 0;
};
FolderFacts factsOf(int descriptor);

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

}
