// Times the ring layout and the tree searches on a synthetic tree of about 1,000,000
// nodes shaped like a home folder (a deep Library, projects with node_modules and git
// objects, a photo library package, downloads and movies of large files):
//   layout [--runs N]
// Prints one line per measurement with the median and the fastest run.
#include "Geometry/SunburstLayout.hpp"
#include "Scanning/ScanTree.hpp"
#include "Scanning/TreeBuilder.hpp"
#include "TreeQueries/TreeSearch.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

using namespace tarnwick;

namespace {

// How a region of the home folder looks: how many entries a folder holds, how many of
// them are folders, and how large its files are (log-normal around medianBytes).
struct Shape {
    int entriesPerFolder;
    double folderShare;
    double medianBytes;
    double sizeSpread;
    std::vector<const char*> extensions;
};

class HomeTree {
public:
    HomeTree()
        : m_builder("home", NodeKind::directory, std::nullopt, 1'050'000)
    {
    }

    std::shared_ptr<const ScanTree> build()
    {
        const Shape code { 14, 0.18, 6'000, 1.6, { "js", "ts", "json", "map", "md", "c", "h", "swift", "py" } };
        const Shape caches { 20, 0.10, 8'000, 2.0, { "cache", "db", "bin", "dat", "tmp" } };
        const Shape derived { 16, 0.22, 20'000, 2.0, { "o", "swiftmodule", "d", "dia", "pcm", "json" } };
        const Shape objects { 60, 0.0, 9'000, 1.8, { "" } };
        const Shape photos { 40, 0.05, 2'000'000, 0.8, { "heic", "jpg", "mov", "png" } };
        const Shape documents { 12, 0.15, 50'000, 2.0, { "pdf", "docx", "pages", "key", "xlsx", "txt" } };
        const Shape media { 10, 0.1, 60'000'000, 1.3, { "mp4", "mov", "dmg", "zip", "iso" } };
        const Shape music { 14, 0.08, 5'000'000, 0.6, { "m4a", "mp3", "flac" } };

        NodeID library = folder(NodeID::root(), "Library");
        fill(folder(library, "Caches"), 90'000, caches);
        fill(folder(library, "Application Support"), 70'000, caches);
        fill(folder(folder(folder(library, "Developer"), "Xcode"), "DerivedData"), 140'000, derived);
        fill(folder(library, "Containers"), 45'000, caches);
        NodeID mail = folder(library, "Mail");
        fill(mail, 25'000, documents);
        // A flat folder of many files: the layout sums what it cannot draw in one pass.
        flat(folder(folder(mail, "V10"), "Messages"), 60'000, documents);

        NodeID projects = folder(NodeID::root(), "Projects");
        for (int repo = 0; repo < 30; ++repo) {
            NodeID root = folder(projects, "project-" + std::to_string(repo));
            fill(folder(root, "src"), 2'000, code);
            fill(folder(root, "node_modules"), 9'000, code);
            NodeID git = folder(folder(root, ".git"), "objects");
            for (int prefix = 0; prefix < 16; ++prefix)
                fill(folder(git, hex(prefix)), 80, objects);
        }
        NodeID pictures = folder(NodeID::root(), "Pictures");
        NodeID photoLibrary = m_builder.addNode(pictures, "Photos Library.photoslibrary", NodeKind::package, std::nullopt, std::nullopt, 0,
            TreeDate::noDate, TreeDate::noDate, false);
        fill(photoLibrary, 30'000, photos);
        fill(folder(NodeID::root(), "Documents"), 60'000, documents);
        fill(folder(NodeID::root(), "Downloads"), 400, media);
        fill(folder(NodeID::root(), "Movies"), 120, media);
        fill(folder(NodeID::root(), "Music"), 12'000, music);
        fill(folder(NodeID::root(), ".cache"), 30'000, caches);
        fill(folder(NodeID::root(), ".npm"), 1'000'000 - m_builder.count(), code);
        return std::move(m_builder).finalize("/home/user", ScanCoverage::whole(), TreeBuilder::Metadata::included);
    }

private:
    static std::string hex(int value)
    {
        char text[8];
        std::snprintf(text, sizeof text, "%02x", value * 16 + 3);
        return text;
    }

    NodeID folder(NodeID parent, const std::string& name)
    {
        return m_builder.addNode(parent, name, NodeKind::directory, std::nullopt, std::nullopt, 0, randomDate(), randomDate(), false);
    }

    std::int32_t randomDate()
    {
        // Within the five years before 2025-06-01.
        constexpr std::int32_t latest = 770'428'800;
        return latest - static_cast<std::int32_t>(m_random() % (5u * 365 * 86'400));
    }

    std::string entryName(const char* stem, std::uint32_t number, const char* extension)
    {
        // A few names carry accents, as real home folders do.
        const char* accent = m_random() % 50 == 0 ? "-r\xC3\xA9sum\xC3\xA9" : "";
        std::string name = std::string(stem) + "-" + std::to_string(number) + accent;
        if (*extension)
            name += std::string(".") + extension;
        return name;
    }

    void flat(NodeID folder, int count, const Shape& shape)
    {
        std::lognormal_distribution<double> size(std::log(shape.medianBytes), shape.sizeSpread);
        for (int i = 0; i < count; ++i) {
            std::int64_t bytes = (static_cast<std::int64_t>(size(m_random)) / 4096 + 1) * 4096;
            m_builder.addNode(folder, entryName("message", static_cast<std::uint32_t>(i), "emlx"), NodeKind::file, bytes, bytes, 0, randomDate(),
                randomDate(), false);
        }
    }

    // Spreads `budget` nodes below a folder: a work list of folders, each taking a handful
    // of entries and handing what is left of its budget to its subfolders.
    void fill(NodeID top, std::int64_t budget, const Shape& shape)
    {
        struct Pending {
            NodeID folder;
            std::int64_t budget;
        };
        std::lognormal_distribution<double> size(std::log(shape.medianBytes), shape.sizeSpread);
        std::vector<Pending> work { { top, budget } };
        while (!work.empty()) {
            Pending here = work.back();
            work.pop_back();
            std::int64_t entries = std::min<std::int64_t>(here.budget, 1 + static_cast<std::int64_t>(m_random() % (2 * shape.entriesPerFolder)));
            std::int64_t folders = here.budget > entries ? std::max<std::int64_t>(1, std::llround(static_cast<double>(entries) * shape.folderShare)) : 0;
            std::int64_t rest = here.budget - entries;
            for (std::int64_t i = 0; i < entries; ++i) {
                if (i < folders) {
                    NodeID sub = folder(here.folder, entryName("dir", static_cast<std::uint32_t>(m_random() % 100'000), ""));
                    std::int64_t share = rest / (folders - i);
                    rest -= share;
                    work.push_back({ sub, share });
                } else {
                    const char* extension = shape.extensions[m_random() % shape.extensions.size()];
                    std::int64_t bytes = (static_cast<std::int64_t>(size(m_random)) / 4096 + 1) * 4096;
                    m_builder.addNode(here.folder, entryName("file", static_cast<std::uint32_t>(m_random() % 1'000'000), extension), NodeKind::file,
                        bytes, bytes, 0, randomDate(), randomDate(), false);
                }
            }
        }
    }

    TreeBuilder m_builder;
    std::mt19937_64 m_random { 20250601 };
};

struct Timing {
    double median;
    double fastest;
};

Timing measure(int runs, const std::function<void()>& work)
{
    std::vector<double> seconds;
    work(); // warm the caches once
    for (int i = 0; i < runs; ++i) {
        auto start = std::chrono::steady_clock::now();
        work();
        seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(seconds.begin(), seconds.end());
    return { seconds[seconds.size() / 2], seconds.front() };
}

void report(const char* what, Timing timing, const std::string& detail)
{
    std::printf("%-48s median %9.3f ms   fastest %9.3f ms   %s\n", what, timing.median * 1e3, timing.fastest * 1e3, detail.c_str());
}

}

int main(int argc, char** argv)
{
    int runs = 201;
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], "--runs") == 0)
            runs = std::max(1, std::atoi(argv[++i]));
    }
    auto buildStart = std::chrono::steady_clock::now();
    std::shared_ptr<const ScanTree> tree = HomeTree().build();
    double buildSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - buildStart).count();
    std::printf("Synthetic home tree: %d nodes, %.1f GB on disk, built in %.2f s\n", tree->count(),
        static_cast<double>(tree->allocatedSize(NodeID::root())) / 1e9, buildSeconds);
    std::printf("Shared, noisy machine (2 cores, other builds running): read medians, not single runs.\n\n");

    const ScanTree& t = *tree;
    SunburstLayout layout;
    auto noExtraSpan = [](int) { return 0.0; };
    Timing layoutTiming = measure(runs, [&] { layout = SunburstLayout::layout(t, NodeID::root(), 8, 1500, std::nullopt, noExtraSpan); });
    std::size_t sectors = 0;
    for (const auto& ring : layout.rings)
        sectors += ring.size();
    report("layout, 8 rings", layoutTiming, std::to_string(layout.rings.size()) + " rings, " + std::to_string(sectors) + " sectors");

    std::int64_t used = t.allocatedSize(NodeID::root());
    VolumeCapacity capacity { used * 3, used };
    Timing capacityTiming = measure(runs, [&] { layout = SunburstLayout::layout(t, NodeID::root(), 8, 1500, capacity, noExtraSpan); });
    report("layout, 8 rings, with volume capacity", capacityTiming, std::to_string(layout.rings[0].size()) + " sectors in ring 0");

    auto wideSpan = [](int ring) { return 0.002 * (ring + 1); };
    Timing wideTiming = measure(runs, [&] { layout = SunburstLayout::layout(t, NodeID::root(), 12, 1500, std::nullopt, wideSpan); });
    report("layout, 12 rings, view's spans 0.2%*(ring+1)", wideTiming, std::to_string(layout.rings.size()) + " rings");

    int searchRuns = std::max(5, runs / 10);
    TreeSearch::Found found;
    auto search = [&](const char* what, NodeKindSet kinds, std::int64_t minimum, const std::optional<NamePattern>& pattern,
                      const TreeSearch::AgeFilter& age) {
        Timing timing = measure(searchRuns, [&] { found = TreeSearch::largestItems(t, NodeID::root(), kinds, minimum, pattern, age, 20); });
        report(what, timing, std::to_string(found.matchCount) + " matches, largest " + std::to_string(found.items.empty() ? 0 : found.items[0].allocated));
    };
    const std::optional<NamePattern> none;
    search("largestItems files, no pattern", { NodeKind::file }, 0, none, {});
    search("largestItems any kind, name '*.DMG'", NodeKindSet::all(), 0, *NamePattern::compile("*.DMG"), {});
    search("largestItems any kind, name '*cache*'", NodeKindSet::all(), 0, *NamePattern::compile("*cache*"), {});
    search("largestItems files, name 'file-1?[0-9]*.[jt]s'", { NodeKind::file }, 0, *NamePattern::compile("file-1?[0-9]*.[jt]s"), {});
    search("largestItems files, name '*résumé*' (accents)", { NodeKind::file }, 0, *NamePattern::compile("*R\xC3\x89SUM\xC3\x89*"), {});
    Date cutoff = Date(std::chrono::seconds(TreeDate::referenceUnixSeconds + 740'000'000));
    search("largestItems files >= 1 MB, changed before", { NodeKind::file }, 1'000'000, none, TreeSearch::AgeFilter { cutoff, {} });

    NodeID library = *t.node("Library");
    Timing below = measure(searchRuns, [&] {
        found = TreeSearch::largestItems(t, library, { NodeKind::file }, 0, *NamePattern::compile("*.db"), {}, 20);
    });
    report("largestItems below Library, name '*.db'", below, std::to_string(found.matchCount) + " matches");

    std::vector<TreeSearch::Item> places;
    Timing placesAll = measure(searchRuns, [&] { places = TreeSearch::largestPlaces(t, NodeID::root(), 0, 20); });
    report("largestPlaces, no minimum, top 20", placesAll, std::to_string(places.size()) + " places, first " + t.relativePath(places.front().node));
    Timing placesLarge = measure(runs, [&] { places = TreeSearch::largestPlaces(t, NodeID::root(), used / 100, 50); });
    report("largestPlaces, at least 1% of the home folder", placesLarge, std::to_string(places.size()) + " places");
    return 0;
}
