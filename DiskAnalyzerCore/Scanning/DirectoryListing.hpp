#pragma once

#include "Scanning/FolderHandle.hpp"
#include "Scanning/NodeID.hpp"
#include "Scanning/NodeKind.hpp"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

// One folder waiting to be listed. A worker opens it relative to its parent when the parent
// could be kept open within the scan's budget, else by its path below the scan's root.
struct DirectoryTask {
    NodeID node;
    std::string path;
    std::shared_ptr<const FolderHandle> parent; // absent for the root and past the budget
    std::uint64_t device = 0; // the file system the folder was seen on, to spot mount points below it

    [[nodiscard]] std::string childPath(std::string_view childName) const
    {
        std::string result;
        result.reserve(path.size() + 1 + childName.size());
        result = path == "/" ? std::string() : path;
        result += '/';
        result += childName;
        return result;
    }
};

// One entry of a folder as the worker read it. Dates are already in the tree's
// stored form (seconds since 2001, or the no-date value).
struct ListedEntry {
    std::uint32_t nameOffset = 0;
    std::uint32_t nameLength = 0;
    NodeKind kind = NodeKind::other;
    bool hidden = false;
    std::optional<std::int64_t> allocatedSize; // folders too: their own blocks
    std::optional<std::int64_t> logicalSize;
    std::uint64_t fileID = 0;
    std::uint64_t device = 0;
    std::uint32_t linkCount = 1;
    int error = 0; // the entry's own read error, 0 when none
    std::int32_t modified = 0;
    std::int32_t created = 0;
};

// A batch of a folder's entries travelling from a worker to the collector. Names live
// back to back in one buffer so a batch costs a couple of allocations, not one per name.
struct DirectoryListing {
    DirectoryTask task;
    std::shared_ptr<const FolderHandle> handle; // the folder kept open for its subfolders, if it could be
    std::vector<ListedEntry> entries;
    std::string names;
    bool isFinal = false;
    bool hadEntries = false;
    int error = 0; // the folder could not be opened or read
    bool wasStopped = false;

    [[nodiscard]] std::string_view name(const ListedEntry& entry) const { return std::string_view(names).substr(entry.nameOffset, entry.nameLength); }
};

}
