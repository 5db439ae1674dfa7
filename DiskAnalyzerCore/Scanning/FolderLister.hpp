#pragma once

#include "Platform/DirectoryStream.hpp"
#include "Scanning/DirectoryListing.hpp"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tarnwick {

// Lists one folder for a worker, batch by batch: each read of raw entries is described
// entry by entry and handed on while the next read goes to the disk. The last batch
// travels in the final listing, so the collector learns the end with the last entries.
// A folder stays open after list() returns only as a FolderHandle within the scan's
// descriptor budget; otherwise it is closed before list() returns.
class FolderLister {
public:
    // The scan's root, open for the whole scan, which every folder is opened below.
    struct Root {
        int descriptor = -1;
        std::string path;
        DescriptorBudget* budget = nullptr; // none: no folder is kept open
    };

    struct Callbacks {
        std::function<bool()> isStopped;
        std::function<void(DirectoryListing)> deliver;
        std::function<void(const std::string&)> entered;   // before the folder is opened
        std::function<void(const std::string&)> batchRead; // after each read of entries
        // Whether the folder at this path is a home folder (for the hidden "Library").
        std::function<bool(const std::string&)> isHomeFolder;
        // Whether a folder with this lower-cased extension is a package.
        std::function<bool(std::string_view)> isPackageExtension;
    };

    static constexpr std::size_t bufferSize = 262144;

    FolderLister(Callbacks callbacks, Root root);
    void list(DirectoryTask task);

    // An entry's facts in the tree's terms (its kind before package types, stored dates).
    static ListedEntry entryFrom(const DirectoryStream::EntryFacts& facts);

private:
    // Opens the task's folder; waits out a shortage of descriptors, which says nothing
    // about the folder. Returns the descriptor, or -errno.
    int open(const DirectoryTask& task) const;
    void parseBatch(int descriptor, std::size_t bytes, const DirectoryTask& task, DirectoryListing& listing);
    [[nodiscard]] NodeKind folderKind(std::string_view name) const;
    DirectoryListing emptyListing(const DirectoryTask& task) const;

    Callbacks m_callbacks;
    Root m_root;
    std::unique_ptr<std::byte[]> m_buffer;
};

}
