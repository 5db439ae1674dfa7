// Times what happens between the end of a scan and its coloured window and saved snapshot:
// the finished scan's analysis as the scan's thread makes it (every mode's maps and the
// owners, on two threads), against what that thread made before (the content map and the
// owners, one after the other); and the snapshot's reduction and encoding from the analysis,
// against the same after making its content, date and visibility maps again, as the writer
// did before. The snapshot file's write is left out: it is the same both ways. Last, the date
// and visibility maps made one by one against the three made together in one pass.
//   analysis [FOLDER] [--rounds N]
// FOLDER defaults to the 1,000,000-entry tree that bench/run.sh makes.
#include "support/BenchTiming.hpp"
#include "Classification/ContentMap.hpp"
#include "Classification/InstalledOwners.hpp"
#include "Classification/ModeBucketMaps.hpp"
#include "Classification/OwnerMap.hpp"
#include "Classification/ScanAnalysis.hpp"
#include "Classification/TimeZone.hpp"
#include "History/SnapshotReducer.hpp"
#include "Scanning/FileScanner.hpp"
#include "Scanning/ScanTree.hpp"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace tarnwick;
using namespace tarnwick::bench;

namespace {

void report(const char* name, Timing timing)
{
    std::printf("%-58s median %7.1f ms   fastest %7.1f ms\n", name, timing.median, timing.minimum);
}

}

int main(int argc, char** argv)
{
    std::string folder = "/var/tmp/tarnwick-bench/tree-1m";
    int rounds = 9;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--rounds") == 0 && i + 1 < argc)
            rounds = std::max(1, std::atoi(argv[++i]));
        else
            folder = argv[i];
    }
    FileScanner::Options options;
    options.root = folder;
    ScanOutcome outcome = FileScanner(options).scan();
    if (!outcome.tree) {
        std::fprintf(stderr, "analysis: cannot scan %s: %s\n", folder.c_str(), outcome.status.message.c_str());
        return 1;
    }
    std::shared_ptr<const ScanTree> tree = outcome.tree;
    std::printf("tree: %s, %d nodes\n", folder.c_str(), tree->count());
    // Read once per process in the app too, before any scan's owners.
    const OwnerPlaces& places = InstalledOwners::places();
    const TimeZone& zone = TimeZone::system();
    const DateGroup::Boundaries boundaries = DateGroup::Boundaries::make(outcome.finishedAt, zone);

    std::size_t sink = 0;
    Timing before = timeRounds(rounds, [&] {
        auto content = ContentMap::build(tree);
        auto owners = std::make_shared<const OwnerMap>(OwnerMap::build(*tree, places));
        sink += content->buckets().width() + owners->owners().size();
    });
    std::shared_ptr<const ScanAnalysis> analysis;
    Timing now = timeRounds(rounds, [&] { analysis = ScanAnalysis::make(tree, boundaries, &places); });
    Timing remade = timeRounds(rounds, [&] {
        auto content = ContentMap::build(tree);
        auto modified = ModeBucketMaps::dates(tree, ModeBucketMaps::DateKind::modified, boundaries);
        auto created = ModeBucketMaps::dates(tree, ModeBucketMaps::DateKind::created, boundaries);
        auto hidden = ModeBucketMaps::hidden(tree);
        sink += content->buckets().width() + modified->width() + created->width() + hidden->width();
    });
    Timing snapshot = timeRounds(rounds, [&] {
        SnapshotReducer::Options reduce { outcome.finishedAt, std::nullopt, analysis.get(), &zone };
        auto encoded = Snapshot::encodeForStore(SnapshotReducer::reduce(*tree, reduce));
        sink += encoded ? encoded->current.size() : 0;
    });

    Timing oneByOne = timeRounds(rounds, [&] {
        sink += ModeBucketMaps::dates(tree, ModeBucketMaps::DateKind::modified, boundaries)->width();
        sink += ModeBucketMaps::dates(tree, ModeBucketMaps::DateKind::created, boundaries)->width();
        sink += ModeBucketMaps::hidden(tree)->width();
    });
    Timing together = timeRounds(rounds, [&] {
        sink += ModeBucketMaps::together(tree, boundaries, ModeBucketMaps::Visibility::with).hidden->width();
    });

    report("scan thread before: content map, then owners", before);
    report("scan thread now: the analysis, every mode (two threads)", now);
    report("snapshot writer before: content, date, hidden maps again", remade);
    report("snapshot: reduce + encode from the analysis", snapshot);
    report("date and visibility maps one by one", oneByOne);
    report("date and visibility maps together", together);
    std::printf("%-58s before %7.1f ms   now %7.1f ms\n", "scan end to colours ready for the window (medians)", before.median, now.median);
    std::printf("%-58s before %7.1f ms   now %7.1f ms\n", "scan end to snapshot encoded (medians, one after another)",
        before.median + remade.median + snapshot.median, now.median + snapshot.median);
    return sink == 0 ? 1 : 0;
}
