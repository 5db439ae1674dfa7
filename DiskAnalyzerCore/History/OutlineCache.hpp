#pragma once

#include "History/HistoryFiles.hpp"
#include "History/SnapshotOutline.hpp"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tarnwick {

// The outlines of one place already read from a history's snapshot files, kept in the user's
// cache folder by the version of the file each was read from (inode, size, modification
// time). Snapshot files are written once and replaced, never changed in place, so asking
// again for a place's history reads no snapshot file that was read before.
//
// Only a cache: a cache file that is missing, damaged or of another shape counts as empty,
// one that cannot be written is left as it was, and nothing else depends on it.
class OutlineCache {
public:
    // More files than this in the folder and the least recently written go.
    static constexpr std::size_t maximumFiles = 256;

    // The cache of place (absolute) in the history of the place folder placeFolder of the
    // store at storeDirectory, inside folder.
    OutlineCache(std::string folder, std::string_view storeDirectory, std::string_view placeFolder, std::string_view place);

    [[nodiscard]] std::optional<SnapshotOutline> find(std::int64_t entryID, const HistoryFiles::FileSignature& file) const;
    void put(std::int64_t entryID, const HistoryFiles::FileSignature& file, const SnapshotOutline& outline);
    // Writes the cache when it changed, keeping only the given entries (those still listed).
    void save(const std::vector<std::int64_t>& listed);

    [[nodiscard]] const std::string& path() const { return m_path; }

private:
    struct Kept {
        HistoryFiles::FileSignature file;
        SnapshotOutline outline;
    };

    void read();
    void prune() const;

    std::string m_folder;
    std::string m_path;
    std::map<std::int64_t, Kept> m_kept;
    bool m_changed = false;
};

}
