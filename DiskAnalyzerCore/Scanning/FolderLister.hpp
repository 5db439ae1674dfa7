#pragma once

#include "Scanning/DirectoryListing.hpp"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tarnwick {

// Lists one folder for a worker, batch by batch: each read of raw entries is described
// entry by entry and handed on while the next read goes to the disk. The last batch
// travels in the final listing, so the collector learns the end with the last entries.
class FolderLister {
public:
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

    explicit FolderLister(Callbacks callbacks);
    void list(DirectoryTask task);

private:
    void parseBatch(int descriptor, std::size_t bytes, const DirectoryTask& task, DirectoryListing& listing);
    [[nodiscard]] NodeKind folderKind(std::string_view name) const;
    DirectoryListing emptyListing(const DirectoryTask& task) const;

    Callbacks m_callbacks;
    std::unique_ptr<std::byte[]> m_buffer;
};

}
