// Times snapshots of a synthetic disk whose snapshot keeps a given number of folders:
// reduction of the scan tree (with colours), encoding, decoding, and the comparison of two
// such snapshots. One core, several rounds each (minimum and median wall time); the colour maps are built beforehand, as
// the app has them from showing the scan.
//   snapshot [KEPT_FOLDERS] [ROUNDS]      (50,000 kept folders and 9 rounds by default)
#include "support/BenchTiming.hpp"
#include "Classification/TimeZone.hpp"
#include "History/HistoryChanges.hpp"
#include "History/Snapshot.hpp"
#include "History/SnapshotEncoder.hpp"
#include "History/SnapshotReducer.hpp"
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
#include <unordered_set>
#include <vector>

using namespace tarnwick;
using namespace tarnwick::bench;

namespace {

constexpr std::array<std::string_view, 16> extensions {
    "js", "json", "py", "cpp", "o", "png", "jpg", "mp4", "mov", "mp3", "pdf", "zip", "log", "sqlite", "bin", "",
};

// Every large folder holds a few files of 2 to 6 MB, so it reaches 10 MB on its own, and
// one small folder of small files that the snapshot leaves out.
// The later disk is the same one a while on: a tenth of the files grew by half and one
// folder in two hundred was renamed (so it shows as removed and new).
enum class Version { earlier, later };

std::shared_ptr<const ScanTree> syntheticDisk(std::size_t keptFolders, std::uint64_t seed, Version version = Version::earlier)
{
    SplitMix random { seed };
    TreeBuilder builder("disk", NodeKind::directory, std::nullopt, keptFolders * 12);
    std::vector<NodeID> folders { NodeID::root() };
    const std::int32_t now = TreeDate::encodeUnixSeconds(static_cast<std::int64_t>(std::time(nullptr)));
    auto date = [&](std::size_t spread) { return now - static_cast<std::int32_t>(random.below(spread)); };
    std::string name;
    std::size_t serial = 0;
    std::unordered_set<std::string> namesInUse;
    auto addFiles = [&](NodeID folder, int count, std::int64_t smallest, std::int64_t range) {
        for (int f = 0; f < count; ++f) {
            std::string_view extension = extensions[random.below(extensions.size())];
            name = "file" + std::to_string(++serial);
            if (!extension.empty())
                name.append(".").append(extension);
            auto size = smallest + static_cast<std::int64_t>(random.below(static_cast<std::size_t>(range)));
            if (random.below(10) == 0 && version == Version::later)
                size += size / 2;
            std::int32_t modified = date(2 * 365 * 86400);
            builder.addNode(folder, name, NodeKind::file, size, size - static_cast<std::int64_t>(random.below(4096)), serial, modified,
                modified - static_cast<std::int32_t>(random.below(86400 * 365)), false);
        }
    };
    while (folders.size() < keptFolders) {
        // Prefer recent folders so that the tree grows deep as well as wide.
        NodeID parent = folders[folders.size() - 1 - std::min(folders.size() - 1, random.below(48))];
        // Names repeat across the disk but not within a folder, as on a real one.
        name = folderNames[random.below(folderNames.size())];
        for (int copy = 2; !namesInUse.insert(std::to_string(parent.value) + "/" + name).second; ++copy)
            name = std::string(folderNames[random.below(folderNames.size())]) + " " + std::to_string(copy);
        ++serial;
        if (random.below(200) == 0 && version == Version::later)
            name += " (renamed)";
        NodeKind kind = name.find(".xcodeproj") != std::string::npos ? NodeKind::package : NodeKind::directory;
        std::int32_t created = date(3 * 365 * 86400);
        NodeID folder = builder.addNode(parent, name, kind, std::nullopt, std::nullopt, serial, created, created, name.front() == '.');
        folders.push_back(folder);
        addFiles(folder, 3 + static_cast<int>(random.below(4)), 2'000'000, 4'000'000);
        ++serial;
        NodeID small = builder.addNode(folder, "small", NodeKind::directory, std::nullopt, std::nullopt, serial, created, created, false);
        addFiles(small, 3, 1'000, 100'000);
    }
    return std::move(builder).finalize("/disk", ScanCoverage::whole(), TreeBuilder::Metadata::included);
}

void report(const char* what, Timing timing, const char* goal = "")
{
    std::printf("%-44s min %7.2f ms   median %7.2f ms  %s\n", what, timing.minimum, timing.median, goal);
}

}

int main(int argc, char** argv)
{
    std::size_t keptFolders = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 50'000;
    int rounds = argc > 2 ? std::atoi(argv[2]) : 9;
    if (keptFolders < 1 || rounds < 1) {
        std::fprintf(stderr, "usage: snapshot [KEPT_FOLDERS] [ROUNDS]\n");
        return 2;
    }
    const TimeZone& zone = TimeZone::system();
    const DateGroup::Boundaries boundaries = DateGroup::Boundaries::current();
    std::shared_ptr<const ScanTree> tree = syntheticDisk(keptFolders, 42);
    auto analysis = ScanAnalysis::make(tree, boundaries, nullptr);
    const SnapshotReducer::Options options { std::chrono::system_clock::now(), Snapshot::Volume { 1'000'000'000'000, 200'000'000'000 },
        analysis.get(), &zone };
    const SnapshotReducer::Options plainOptions { options.date, options.volume, nullptr, &zone };

    Snapshot snapshot = SnapshotReducer::reduce(*tree, options);
    std::vector<std::uint8_t> file = snapshot.encode().value();
    std::vector<std::uint8_t> plainFile = snapshot.encode(Snapshot::Colors::without).value();
    std::printf("tree: %d nodes, %.1f GB; snapshot: %d folders, body %zu bytes, file %zu bytes with colours, %zu without\n", tree->count(),
        static_cast<double>(tree->allocatedSize(NodeID::root())) / 1e9, snapshot.nodeCount(),
        SnapshotEncoder::body(snapshot, Snapshot::Colors::with).value().size(), file.size(), plainFile.size());

    std::size_t sink = 0;
    report("reduce (with colours)", timeRounds(rounds, [&] { sink += SnapshotReducer::reduce(*tree, options).names.size(); }));
    report("encode (with colours)", timeRounds(rounds, [&] { sink += snapshot.encode().value().size(); }));
    report("reduce + encode (with colours)", timeRounds(rounds, [&] {
        sink += SnapshotReducer::reduce(*tree, options).encode().value().size();
    }), "goal < 30 ms");
    report("reduce + encode (without colours)", timeRounds(rounds, [&] {
        sink += SnapshotReducer::reduce(*tree, plainOptions).encode().value().size();
    }));
    report("decode (with colours)", timeRounds(rounds, [&] { sink += Snapshot::decode(file).value().names.size(); }), "goal < 15 ms");
    report("decode (without colours)", timeRounds(rounds, [&] { sink += Snapshot::decode(plainFile).value().names.size(); }));

    std::shared_ptr<const ScanTree> laterTree = syntheticDisk(keptFolders, 42, Version::later);
    auto laterAnalysis = ScanAnalysis::make(laterTree, boundaries, nullptr);
    auto earlier = std::make_shared<const Snapshot>(std::move(snapshot));
    auto later = std::make_shared<const Snapshot>(
        SnapshotReducer::reduce(*laterTree, { options.date + std::chrono::hours(24 * 30), options.volume, laterAnalysis.get(), &zone }));
    auto sample = HistoryQueries::changes(earlier, later).value();
    std::printf("changes: %+.1f GB, %zu changed places inside (+%lld more), %zu in grew most\n", static_cast<double>(sample.change) / 1e9,
        sample.inside.size(), static_cast<long long>(sample.moreInside), sample.grewMost.size());
    report("changes between two snapshots", timeRounds(rounds, [&] { sink += HistoryQueries::changes(earlier, later)->inside.size(); }),
        "goal < 20 ms");
    return sink == 0 ? 1 : 0;
}
