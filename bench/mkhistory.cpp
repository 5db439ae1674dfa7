// Writes a history of a synthetic disk for timing the history commands as whole processes:
// one day snapshot a day for the past DAYS days (the latest scanned an hour ago), each with
// colours, of a disk whose snapshots keep KEPT_FOLDERS folders and which grows a little each
// day. The place is "/disk" on the volume "bench-volume"; with DISKS above 1, also "/disk2" on
// "bench-volume-2" and so on, as a server's daily snapshot of each of its disks leaves them.
//   mkhistory DATA_FOLDER [KEPT_FOLDERS] [DAYS] [DISKS]   (50,000 folders, 30 days, 1 disk by default)
// Then, for example:
//   XDG_DATA_HOME=DATA_FOLDER build/tarnwick history /disk
#include "support/BenchTiming.hpp"
#include "Classification/TimeZone.hpp"
#include "History/HistoryStore.hpp"
#include "History/Snapshot.hpp"
#include "Classification/ScanAnalysis.hpp"
#include "History/SnapshotReducer.hpp"
#include "Scanning/ScanTree.hpp"
#include "Scanning/TreeBuilder.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

using namespace tarnwick;
using namespace tarnwick::bench;

namespace {

// The same folders every day (same seed); each day a few files have grown.
std::shared_ptr<const ScanTree> disk(std::size_t keptFolders, int day, const std::string& rootPath)
{
    SplitMix random { 42 };
    SplitMix growth { static_cast<std::uint64_t>(1000 + day) };
    TreeBuilder builder("disk", NodeKind::directory, std::nullopt, keptFolders * 6);
    std::vector<NodeID> folders { NodeID::root() };
    const std::int32_t now = TreeDate::encodeUnixSeconds(static_cast<std::int64_t>(std::time(nullptr)));
    std::uint64_t serial = 0;
    while (folders.size() < keptFolders) {
        // Parents among the first folders keep paths as short as a real disk's (a few levels).
        NodeID parent = folders[random.below(std::min<std::size_t>(folders.size(), 1 + folders.size() / 20))];
        ++serial;
        NodeID folder = builder.addNode(parent, "folder " + std::to_string(serial), NodeKind::directory, std::nullopt, std::nullopt, serial,
            now, now, false);
        folders.push_back(folder);
        for (int f = 0; f < 4; ++f) {
            auto size = 2'000'000 + static_cast<std::int64_t>(random.below(4'000'000));
            if (growth.below(50) == 0)
                size += static_cast<std::int64_t>(day) * 1'000'000;
            ++serial;
            builder.addNode(folder, "file" + std::to_string(serial) + ".bin", NodeKind::file, size, size, serial, now, now, false);
        }
    }
    return std::move(builder).finalize(rootPath, ScanCoverage::whole(), TreeBuilder::Metadata::included);
}

}

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: mkhistory DATA_FOLDER [KEPT_FOLDERS] [DAYS] [DISKS]\n");
        return 2;
    }
    const std::string history = std::string(argv[1]) + "/tarnwick/" + std::string(HistoryStore::historyFolderName);
    const std::size_t keptFolders = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 50'000;
    const int days = argc > 3 ? std::atoi(argv[3]) : 30;
    const int disks = argc > 4 ? std::max(1, std::atoi(argv[4])) : 1;
    std::filesystem::remove_all(history);
    const Date latest = std::chrono::system_clock::now() - std::chrono::hours(1);
    Date clock = latest;
    auto store = HistoryStore::open(history, Calendar::current(), HistoryStore::defaultSizeLimit, [&] { return clock; });
    if (!store) {
        std::fprintf(stderr, "mkhistory: %s\n", store.error().message().c_str());
        return 1;
    }
    std::vector<HistorySource> sources;
    for (int d = 1; d <= disks; ++d)
        sources.push_back(d == 1 ? HistorySource { "/disk", "bench-volume" } : HistorySource { "/disk" + std::to_string(d), "bench-volume-" + std::to_string(d) });
    const TimeZone& zone = TimeZone::system();
    for (int day = days - 1; day >= 0; --day) {
        clock = latest - std::chrono::hours(24 * day);
        for (const HistorySource& source : sources) {
            std::shared_ptr<const ScanTree> tree = disk(keptFolders, days - day, source.path);
            auto analysis = ScanAnalysis::make(tree, DateGroup::Boundaries::make(clock, zone), nullptr);
            const Snapshot::Volume volume { 2'000'000'000'000, 900'000'000'000 - (days - day) * 3'000'000'000LL };
            auto encoded = Snapshot::encodeForStore(SnapshotReducer::reduce(*tree, { clock, volume, analysis.get(), &zone }));
            if (!encoded)
                return 1;
            HistoryStore::SnapshotFiles files;
            files.date = clock;
            files.total = tree->allocatedSize(NodeID::root());
            files.volumeTotal = volume.total;
            files.volumeAvailable = volume.available;
            files.current = std::move(encoded->current);
            files.day = std::move(encoded->day);
            if (auto saved = (*store)->save(source, files); !saved) {
                std::fprintf(stderr, "mkhistory: %s\n", saved.error().message().c_str());
                return 1;
            }
        }
    }
    const HistorySource& source = sources.front();
    auto record = (*store)->record(source);
    std::printf("%s: %zu day snapshots of %zu kept folders, %lld bytes\n", history.c_str(), record ? record->entries.size() : 0, keptFolders,
        static_cast<long long>((*store)->storedBytes()));
    return 0;
}
