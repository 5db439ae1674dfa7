// Times owner attribution on a synthetic home folder: the owner index, its places, the
// owner pass over the tree and the owner mode's bucket map, one core, several rounds each.
// Also reads this machine's own index once.
//   ownermap [NODES] [ROUNDS]      (1,000,000 nodes and 7 rounds by default)
#include "support/BenchTiming.hpp"
#include "Classification/OwnerMap.hpp"
#include "Classification/OwnerPlaces.hpp"
#include "Scanning/ScanTree.hpp"
#include "Scanning/TreeBuilder.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

using namespace tarnwick;
using namespace tarnwick::bench;

namespace {

constexpr int appCount = 300;

OwnerIndex syntheticIndex()
{
    OwnerIndex index(ApplicationRoots::under("/home/user", ""));
    for (int app = 0; app < appCount; ++app) {
        DesktopEntry entry;
        entry.type = "Application";
        entry.name = "App " + std::to_string(app);
        entry.exec = "app" + std::to_string(app) + " %U";
        entry.startupWMClass = "App" + std::to_string(app) + "Window";
        index.addDesktopEntry("org.example.App" + std::to_string(app), entry);
    }
    index.addAgentPlaces();
    index.addAliases();
    return index;
}

// A home folder as the user's: the usual data folders, each with a folder per app (half of
// them installed), agents' folders, and documents; the rest of the nodes grow below them.
std::shared_ptr<const ScanTree> syntheticHome(std::size_t nodes)
{
    SplitMix random { 7 };
    TreeBuilder builder("user", NodeKind::directory, std::nullopt, nodes);
    auto folder = [&](NodeID parent, const std::string& name) {
        return builder.addNode(parent, name, NodeKind::directory, std::nullopt, std::nullopt, 0, 0, 0, false);
    };
    std::vector<NodeID> folders;
    const NodeID root = NodeID::root();
    NodeID local = folder(root, ".local");
    NodeID var = folder(root, ".var");
    std::array<NodeID, 5> dataFolders { folder(root, ".config"), folder(root, ".cache"), folder(local, "share"), folder(var, "app"),
        folder(root, "snap") };
    for (NodeID data : dataFolders) {
        for (int app = 0; app < 2 * appCount; app += 2)
            folders.push_back(folder(data, app % 4 == 0 ? "app" + std::to_string(app) : "org.example.App" + std::to_string(app)));
    }
    for (const char* name : { ".claude", ".codex", ".cursor", "Documents", "Projects", "Downloads", "Music" })
        folders.push_back(folder(root, name));
    std::string name;
    while (static_cast<std::size_t>(builder.count()) < nodes) {
        // Half anywhere, half near the newest folders, so that the tree is both wide and deep.
        std::size_t pick = random.below(2) == 0 ? random.below(folders.size())
                                                : folders.size() - 1 - std::min(folders.size() - 1, random.below(64));
        NodeID parent = folders[pick];
        if (random.below(10) == 0) {
            folders.push_back(folder(parent, "folder" + std::to_string(builder.count())));
            continue;
        }
        name = "file" + std::to_string(builder.count()) + ".dat";
        int magnitude = 6 + static_cast<int>(random.below(15));
        auto size = static_cast<std::int64_t>((1 + random.below(1024)) << magnitude) / 1024 + 1;
        builder.addNode(parent, name, NodeKind::file, size, size, 0, 0, 0, false);
    }
    return std::move(builder).finalize("/home/user", ScanCoverage::whole(), TreeBuilder::Metadata::included);
}

void report(const char* name, Timing timing)
{
    std::printf("%-44s min %8.3f ms   median %8.3f ms\n", name, timing.minimum, timing.median);
}

}

int main(int argc, char** argv)
{
    std::size_t nodes = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1'000'000;
    int rounds = argc > 2 ? std::atoi(argv[2]) : 7;
    if (nodes < 4000 || rounds < 1) {
        std::fprintf(stderr, "usage: ownermap [NODES (at least 4000)] [ROUNDS]\n");
        return 2;
    }
    std::shared_ptr<const ScanTree> tree = syntheticHome(nodes);
    std::printf("tree: %d nodes below /home/user, %.1f GB; index: %d synthetic apps and the agents\n", tree->count(),
        static_cast<double>(tree->allocatedSize(NodeID::root())) / 1e9, appCount);

    std::size_t sink = 0;
    OwnerIndex machine;
    report("this machine's owner index (read once)", timeRounds(1, [&] { machine = OwnerIndex::build(ApplicationRoots::current()); }));
    std::printf("  %zu apps, system \"%s\"\n", machine.apps().size(), machine.systemName().c_str());

    OwnerIndex index = syntheticIndex();
    report("synthetic owner index", timeRounds(rounds, [&] { sink += syntheticIndex().apps().size(); }));
    report("owner places", timeRounds(rounds, [&] { sink += OwnerPlaces(index).stateCount(); }));
    OwnerPlaces places(index);
    OwnerMap map = OwnerMap::build(*tree, places);
    report("owner pass (OwnerMap::build)", timeRounds(rounds, [&] { sink += OwnerMap::build(*tree, places).owners().size(); }));
    report("owner bucket map (from the owner map)", timeRounds(rounds, [&] { sink += map.buckets(tree)->groups().size(); }));
    report("owner mode end to end (places, pass, map)", timeRounds(rounds, [&] {
        OwnerPlaces fresh(index);
        sink += OwnerMap::build(*tree, fresh).buckets(tree)->groups().size();
    }));
    std::printf("groups: %zu (apps folded into other apps: %zu)\n", map.owners().size(), map.folded().size());
    for (const OwnerMap::Owner& owner : map.owners())
        std::printf("  %-24s %8.1f MB\n", owner.displayName.c_str(), static_cast<double>(owner.bytes) / 1e6);
    return sink == 0 ? 1 : 0;
}
