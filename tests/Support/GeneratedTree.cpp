#include "Support/GeneratedTree.hpp"

#include "Support/TempFolder.hpp"

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/file.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnwick::fixtures {

namespace {

class Maker {
public:
    explicit Maker(GeneratedTree& tree)
        : m_tree(tree)
    {
    }

    int folder(int at, const std::string& name)
    {
        if (mkdirat(at, name.c_str(), 0755) != 0)
            throw std::runtime_error("mkdir " + name);
        ++m_tree.entries;
        ++m_tree.folders;
        int descriptor = openat(at, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (descriptor < 0)
            throw std::runtime_error("open " + name);
        return descriptor;
    }

    void file(int at, const std::string& name, std::size_t bytes)
    {
        int descriptor = openat(at, name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (descriptor < 0)
            throw std::runtime_error("create " + name);
        static const std::string block(65536, 'x');
        while (bytes > 0) {
            std::size_t chunk = std::min(bytes, block.size());
            if (write(descriptor, block.data(), chunk) != static_cast<ssize_t>(chunk))
                break;
            bytes -= chunk;
        }
        close(descriptor);
        ++m_tree.entries;
    }

private:
    GeneratedTree& m_tree;
};

// The names of each hard-linked file that make() links inside the tree.
std::vector<std::vector<std::string>> linkNames()
{
    return {
        { "links/same/one", "links/same/two" },
        { "links/q0/shared", "links/q1/shared", "links/q2/shared", "links/q3/shared" },
        { "flat/f0/file-0.dat", "links/across/same-as-flat" },
    };
}


}

GeneratedTree GeneratedTree::make(const std::string& rootPath, const std::string& outside, int flatFolders)
{
    GeneratedTree tree;
    tree.root = rootPath;
    tree.outside = outside;
    Maker make(tree);
    int root = open(rootPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);

    int wide = make.folder(root, "wide");
    for (int i = 0; i < 5000; ++i) {
        int sub = make.folder(wide, "w" + std::to_string(i));
        for (int j = 0; j < 3; ++j) {
            int leaf = make.folder(sub, "s" + std::to_string(j));
            make.file(leaf, "f", (i + j) % 7 == 0 ? 6000 : 0);
            close(leaf);
        }
        close(sub);
    }
    close(wide);

    // Over 8,000 bytes of path: more than one call of the system takes.
    int at = make.folder(root, "deep");
    for (int depth = 0; depth < 200; ++depth) {
        make.file(at, "a", 100);
        make.file(at, "b", 0);
        int next = make.folder(at, "level-" + std::to_string(depth) + "-of-a-long-chain-of-folders");
        close(at);
        at = next;
    }
    make.file(at, "bottom", 5000);
    close(at);

    int empty = make.folder(root, "ten-thousand-empty");
    for (int i = 0; i < 10000; ++i)
        make.file(empty, "e" + std::to_string(i), 0);
    close(empty);

    int flat = make.folder(root, "flat");
    for (int f = 0; f < flatFolders; ++f) {
        int folder = make.folder(flat, "f" + std::to_string(f));
        for (int i = 0; i < 1000; ++i)
            make.file(folder, "file-" + std::to_string(i) + ".dat", i % 50 == 0 ? 20000 : 10);
        close(folder);
    }
    close(flat);

    int sparse = make.folder(root, "sparse");
    int image = openat(sparse, "disk.img", O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    if (image < 0 || ftruncate(image, 1'000'000'000) != 0 || pwrite(image, "data", 4, 500'000'000) != 4)
        throw std::runtime_error("sparse file");
    close(image);
    ++tree.entries;
    close(sparse);

    int links = make.folder(root, "links");
    int same = make.folder(links, "same");
    make.file(same, "one", 300000);
    linkat(same, "one", same, "two", 0);
    ++tree.entries;
    for (int i = 0; i < 4; ++i) {
        int folder = make.folder(links, "q" + std::to_string(i));
        if (i == 0)
            make.file(folder, "shared", 200000);
        else {
            linkat(root, "links/q0/shared", folder, "shared", 0);
            ++tree.entries;
        }
        close(folder);
    }
    int across = make.folder(links, "across");
    linkat(root, "flat/f0/file-0.dat", across, "same-as-flat", 0);
    ++tree.entries;
    make.file(links, "outside-too", 70000);
    linkat(links, "outside-too", AT_FDCWD, (outside + "/other-name").c_str(), 0);
    close(same);
    close(links);
    close(root);
    tree.hardLinks = linkNames();
    return tree;
}

const GeneratedTree& GeneratedTree::shared()
{
    static const GeneratedTree tree = [] {
        std::string base = std::string(TARNWICK_BINARY_DIR) + "/test-trees/scale-1";
        std::filesystem::create_directories(base);
        int lock = open((base + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        flock(lock, LOCK_EX);
        std::string marker = base + "/complete";
        GeneratedTree made;
        std::ifstream done(marker);
        if (done >> made.entries >> made.folders) {
            made.root = base + "/tree";
            made.outside = base + "/outside";
            made.hardLinks = linkNames();
        } else {
            runShell("chmod -R u+rwx '" + base + "' 2>/dev/null; rm -rf '" + base + "'");
            for (const char* folder : { "/tree", "/outside" })
                std::filesystem::create_directories(base + folder);
            made = make(base + "/tree", base + "/outside");
            std::ofstream(marker) << made.entries << ' ' << made.folders << '\n';
        }
        close(lock);
        return made;
    }();
    return tree;
}

bool GeneratedTree::linkCrosses(const std::string& folder) const
{
    auto inside = [&](const std::string& path) { return folder.empty() || path.starts_with(folder + "/"); };
    for (const auto& names : hardLinks) {
        int in = 0;
        for (const std::string& name : names)
            in += inside(name) ? 1 : 0;
        if (in > 0 && in < static_cast<int>(names.size()))
            return true;
    }
    return false;
}

}
