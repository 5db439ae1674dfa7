// Times the colour maps of a synthetic tree: classification, the content map, the two date
// maps, the hidden map and the owner map (with this machine's owner index), one core,
// several rounds each. bench/ownermap.cpp looks at owners in a home-shaped tree.
//   colormaps [NODES] [ROUNDS]      (1,000,000 nodes and 7 rounds by default)
#include "support/BenchTiming.hpp"
#include "Classification/ContentClassifier.hpp"
#include "Classification/ContentMap.hpp"
#include "Classification/DateGroup.hpp"
#include "Classification/ModeBucketMaps.hpp"
#include "Classification/OwnerMap.hpp"
#include "Scanning/ScanTree.hpp"
#include "Scanning/TreeBuilder.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

using namespace tarnwick;
using namespace tarnwick::bench;

namespace {

// File extensions: common, rare, unknown and none.
constexpr std::array<std::string_view, 32> extensions {
    "js", "ts", "json", "py", "pyc", "h", "cpp", "o", "png", "jpg", "JPG", "mp4", "mov", "mp3", "pdf", "txt",
    "md", "html", "css", "zip", "gz", "log", "plist", "db", "sqlite", "bin", "dat", "", "", "swift", "gguf", "tmp",
};

std::shared_ptr<const ScanTree> syntheticTree(std::size_t nodes)
{
    SplitMix random { 42 };
    TreeBuilder builder("home", NodeKind::directory, std::nullopt, nodes);
    std::vector<NodeID> folders { NodeID::root() };
    const std::int32_t now = TreeDate::encodeUnixSeconds(static_cast<std::int64_t>(std::time(nullptr)));
    std::string name;
    for (std::size_t i = 1; i < nodes; ++i) {
        // Prefer recent folders so that the tree grows deep as well as wide.
        std::size_t pick = folders.size() - 1 - std::min(folders.size() - 1, random.below(64));
        NodeID parent = folders[pick];
        std::int32_t modified = now - static_cast<std::int32_t>(random.below(2 * 365 * 86400));
        std::int32_t created = modified - static_cast<std::int32_t>(random.below(365 * 86400));
        if (random.below(10) == 0) {
            name = folderNames[random.below(folderNames.size())];
            NodeKind kind = name.ends_with(".xcodeproj") ? NodeKind::package : NodeKind::directory;
            folders.push_back(builder.addNode(parent, name, kind, std::nullopt, std::nullopt, i, modified, created, false));
            continue;
        }
        std::string_view extension = extensions[random.below(extensions.size())];
        name = (random.below(20) == 0 ? "." : "") + std::string("file") + std::to_string(i);
        if (!extension.empty())
            name.append(".").append(extension);
        // Log-uniform from 64 bytes to 1 MB, with one file in a hundred up to 128 MB.
        int magnitude = random.below(100) == 0 ? 20 + static_cast<int>(random.below(8)) : 6 + static_cast<int>(random.below(15));
        auto size = static_cast<std::int64_t>((1 + random.below(1024)) << magnitude) / 1024 + 1;
        builder.addNode(parent, name, NodeKind::file, size, size - static_cast<std::int64_t>(random.below(4096)), i, modified, created, false);
    }
    return std::move(builder).finalize("/home", ScanCoverage::whole(), TreeBuilder::Metadata::included);
}

}

int main(int argc, char** argv)
{
    std::size_t nodes = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1'000'000;
    int rounds = argc > 2 ? std::atoi(argv[2]) : 7;
    if (nodes < 1 || rounds < 1) {
        std::fprintf(stderr, "usage: colormaps [NODES] [ROUNDS]\n");
        return 2;
    }
    auto buildStart = std::chrono::steady_clock::now();
    std::shared_ptr<const ScanTree> tree = syntheticTree(nodes);
    double buildMilliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - buildStart).count();
    std::size_t folderCount = 0;
    for (NodeKind kind : tree->kinds())
        folderCount += isContainer(kind) ? 1 : 0;
    std::printf("tree: %d nodes, %zu folders, %.1f GB, built in %.0f ms (not counted)\n", tree->count(), folderCount,
        static_cast<double>(tree->allocatedSize(NodeID::root())) / 1e9, buildMilliseconds);

    const DateGroup::Boundaries boundaries = DateGroup::Boundaries::current();
    ContentClassifier::Classification classification;
    const OwnerIndex ownerIndex = OwnerIndex::build(ApplicationRoots::current());
    const OwnerPlaces ownerPlaces(ownerIndex);
    std::size_t sink = 0;
    struct Step {
        const char* name;
        std::function<void()> work;
    };
    const Step steps[] = {
        { "classifyTree", [&] { classification = ContentClassifier::classifyTree(*tree); } },
        // Includes copying the two byte arrays, a fraction of a millisecond.
        { "content map (from the classification)", [&] {
             sink += ContentMap::build(tree, classification)->buckets().storedTotals().size();
         } },
        { "last-modified map", [&] { sink += ModeBucketMaps::dates(tree, ModeBucketMaps::DateKind::modified, boundaries)->storedTotals().size(); } },
        { "created map", [&] { sink += ModeBucketMaps::dates(tree, ModeBucketMaps::DateKind::created, boundaries)->storedTotals().size(); } },
        { "hidden map", [&] { sink += ModeBucketMaps::hidden(tree)->storedTotals().size(); } },
        { "owner map (pass and bucket map)", [&] { sink += OwnerMap::build(*tree, ownerPlaces).buckets(tree)->groups().size(); } },
    };
    double totalMinimum = 0;
    double totalMedian = 0;
    for (const Step& step : steps) {
        Timing timing = timeRounds(rounds, step.work);
        totalMinimum += timing.minimum;
        totalMedian += timing.median;
        std::printf("%-40s min %7.1f ms   median %7.1f ms\n", step.name, timing.minimum, timing.median);
    }
    std::printf("%-40s min %7.1f ms   median %7.1f ms\n", "all colour maps (sum)", totalMinimum, totalMedian);
    std::printf("folders keeping their rows (the root and those of 10 MB or more): %zu\n",
        ContentMap::build(tree, classification)->buckets().storedTotals().size());
    // Also the whole, as a caller runs it: classify and build every map once, end to end.
    Timing whole = timeRounds(rounds, [&] {
        auto content = ContentMap::build(tree);
        auto modified = ModeBucketMaps::dates(tree, ModeBucketMaps::DateKind::modified, boundaries);
        auto created = ModeBucketMaps::dates(tree, ModeBucketMaps::DateKind::created, boundaries);
        auto hidden = ModeBucketMaps::hidden(tree);
        auto owner = OwnerMap::build(*tree, ownerPlaces).buckets(tree);
        sink += content->buckets().storedTotals().size() + modified->width() + created->width() + hidden->width() + owner->groups().size();
    });
    std::printf("%-40s min %7.1f ms   median %7.1f ms\n", "all colour maps (end to end)", whole.minimum, whole.median);
    return sink == 0 ? 1 : 0;
}
