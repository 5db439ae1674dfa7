#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tarnwick::fixtures {

// A tree of the shapes that break scanners, made with a few system calls per entry: a folder
// of 5,000 subfolders with three more below each, a chain of folders whose path is longer
// than the system takes in one call, a folder of 10,000 empty files, flat folders of 1,000
// files, sparse files, and hard links (two in one folder, across folders, four in four
// folders, and one whose other name lies outside the tree, in outside).
struct GeneratedTree {
    std::string root;
    std::string outside;
    std::int64_t entries = 0;
    std::int64_t folders = 0;
    // Each hard-linked file's names inside the tree, as paths below the root.
    std::vector<std::vector<std::string>> hardLinks;

    static GeneratedTree make(const std::string& root, const std::string& outside, int flatFolders = 60);
    // One such tree for every test of a build, made by the first that asks (creating 100,000
    // files takes most of a minute on a virtual disk) and only read after that.
    static const GeneratedTree& shared();
    // Whether a hard link joins something inside folder (a path below the root, "" for the
    // root) to something outside it, where du's figure for that folder alone differs.
    [[nodiscard]] bool linkCrosses(const std::string& folder) const;
};

}
