// Times opening a history store: reading index.json and checking that every listed file
// exists. The store holds 400 day snapshots of small fake bytes (one place, and spread over
// eight places), written straight into the folder as a long-used store would hold them.
//   history [ROUNDS]      (25 rounds by default)
#include "History/HistoryStore.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

using namespace tarnwick;

namespace {

constexpr int entryCount = 400;

struct Timing {
    double minimum = 0;
    double median = 0;
    double maximum = 0;
};

Timing summarize(std::vector<double> samples)
{
    std::sort(samples.begin(), samples.end());
    return { samples.front(), samples[samples.size() / 2], samples.back() };
}

bool writeFile(const std::string& path, std::string_view text)
{
    return HistoryFiles::writeAtomically(path, text).has_value();
}

// Writes a store of entryCount day snapshots spread evenly over the places.
bool seed(const std::string& directory, int places)
{
    std::filesystem::remove_all(directory);
    if (!HistoryFiles::makeFolder(directory))
        return false;
    HistoryStore::Index index;
    const Date start = Date(std::chrono::seconds(1'700'000'000));
    const std::string fakeSnapshot(2000, 'x');
    for (int place = 0; place < places; ++place) {
        HistorySource source { "/home/ann/Place " + std::to_string(place), "3c1e9d2a-0b7f-4c55-9a1e-5d2e7f0a1b2c" };
        HistoryStore::SourceRecord record { source, HistoryStore::folderName(source), {}, std::nullopt };
        const std::string folder = directory + "/" + record.folder;
        if (!HistoryFiles::makeFolder(folder) || !writeFile(folder + "/source.json", HistoryStore::encodedSource(source)))
            return false;
        for (int day = 0; day < entryCount / places; ++day) {
            HistoryEntry entry;
            entry.id = index.nextID++;
            entry.date = start + std::chrono::hours(24 * day);
            entry.total = 87'000'000'000 + day;
            entry.volumeTotal = 994'662'584'320;
            entry.volumeAvailable = 412'004'487'168 - day * 1'000'000;
            entry.file = std::to_string(entry.id) + ".snap";
            entry.bytes = static_cast<std::int64_t>(fakeSnapshot.size());
            entry.issueCount = 3;
            entry.hasAllowableIssues = true;
            if (!writeFile(folder + "/" + entry.file, fakeSnapshot))
                return false;
            record.entries.push_back(entry);
        }
        HistoryEntry current = record.entries.back();
        current.id = index.nextID++;
        current.file = "current.snap";
        if (!writeFile(folder + "/current.snap", fakeSnapshot))
            return false;
        record.current = current;
        index.sources.push_back(std::move(record));
    }
    return writeFile(directory + "/index.json", index.encoded());
}

double millisecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

}

int main(int argc, char** argv)
{
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 25;
    const std::string directory = (std::filesystem::temp_directory_path() / "tarnwick-bench-history").string();
    std::printf("history: open a store of %d day snapshots, %d rounds (page cache warm)\n", entryCount, rounds);
    for (int places : { 1, 8 }) {
        if (!seed(directory, places)) {
            std::fprintf(stderr, "history: could not write the store in %s\n", directory.c_str());
            return 1;
        }
        const auto indexBytes = std::filesystem::file_size(directory + "/index.json");
        std::vector<double> samples;
        for (int round = 0; round < rounds; ++round) {
            auto start = std::chrono::steady_clock::now();
            auto store = HistoryStore::open(directory);
            std::size_t listed = 0;
            for (const auto& record : (*store)->index().sources)
                listed += record.entries.size();
            samples.push_back(millisecondsSince(start));
            if (!store || listed != static_cast<std::size_t>(entryCount)) {
                std::fprintf(stderr, "history: the store lists %zu entries\n", listed);
                return 1;
            }
        }
        Timing open = summarize(samples);
        std::printf("  %d place(s), index.json %ju bytes: open min %.2f ms, median %.2f ms, max %.2f ms\n", places,
            static_cast<std::uintmax_t>(indexBytes), open.minimum, open.median, open.maximum);
    }
    std::filesystem::remove_all(directory);
    return 0;
}
