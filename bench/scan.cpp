// Scans a folder and prints one JSON object with the totals, the time and the memory:
//   scan PATH [--workers N|adaptive]
#include "Platform/ProcessResources.hpp"
#include "Scanning/FileScanner.hpp"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>

using namespace tarnwick;

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: scan PATH [--workers N|adaptive]\n");
        return 2;
    }
    FileScanner::Options options;
    options.root = argv[1];
    options.progress = std::make_shared<ScanProgress>();
    for (int i = 2; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], "--workers") == 0) {
            std::string value = argv[++i];
            options.workers = value == "adaptive" ? FileScanner::Workers::adaptive() : FileScanner::Workers::fixed(std::stoi(value));
        }
    }
    FileScanner scanner(options);
    auto start = std::chrono::steady_clock::now();
    ScanOutcome outcome = scanner.scan();
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const ScanTree& tree = *outcome.tree;
    std::printf("{\"items\": %d, \"allocated\": %lld, \"logical\": %lld, \"issues\": %zu, \"seconds\": %.3f, "
                "\"peak_workers\": %d, \"peak_rss_bytes\": %lld, \"tree_bytes\": %zu}\n",
        tree.count() - 1, static_cast<long long>(tree.allocatedSize(NodeID::root())), static_cast<long long>(tree.logicalSize(NodeID::root())),
        tree.issues().size(), seconds, scanner.peakWorkers(), static_cast<long long>(ProcessResources::peakResidentBytes()), tree.byteCount());
    return 0;
}
