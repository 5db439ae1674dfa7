#pragma once

#include <span>
#include <string>
#include <vector>

namespace tarnwick {

struct Snapshot;
class ScanTree;

// Compares the folders a snapshot keeps with another set of folders of the same place:
// those of another snapshot, of a scan tree (the folders a snapshot of it would keep), or
// a list of paths. Only the topmost folder of a change is reported: when a folder appeared,
// the folders inside it appeared with it.
namespace SnapshotCheck {

struct Difference {
    enum class Kind : bool { appeared, disappeared };

    Kind kind = Kind::appeared;
    std::string path; // absolute

    static Difference appeared(std::string path) { return { Kind::appeared, std::move(path) }; }
    static Difference disappeared(std::string path) { return { Kind::disappeared, std::move(path) }; }
    bool operator==(const Difference&) const = default;
};

// Disappeared folders first (in the snapshot's order), then appeared ones (in the other's).
std::vector<Difference> compare(const Snapshot& snapshot, const Snapshot& other);
std::vector<Difference> compare(const Snapshot& snapshot, const ScanTree& tree);
// Folders as absolute paths or relative to the snapshot's place; paths outside it are ignored.
std::vector<Difference> compare(const Snapshot& snapshot, std::span<const std::string> folders);

}

}
