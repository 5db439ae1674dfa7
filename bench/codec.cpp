// LZFSE codec: compressed size against the reference encoder's, and encode/decode speed on one
// core, for every vector in the shared lzfse-vectors folder.
//
//   build/bench/codec [VECTOR_FOLDER] [SECONDS_PER_MEASUREMENT]
//
// MB/s counts 10^6 uncompressed bytes per second; each figure is the median (and best) of as many
// runs as fit in the given time (at least 5, at most 401).
#include "Compression/Lzfse.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;
namespace fs = std::filesystem;

#ifdef TARNWICK_SHARED_DIR
const char* const defaultFolder = TARNWICK_SHARED_DIR "/lzfse-vectors";
#else
const char* const defaultFolder = "../shared/lzfse-vectors";
#endif

Bytes readFile(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return { std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>() };
}

struct Speed {
    double median = 0;
    double best = 0;
};

std::size_t sink = 0;

template<typename Work>
Speed measure(std::size_t bytes, double seconds, Work work)
{
    using Clock = std::chrono::steady_clock;
    auto once = [&] {
        auto start = Clock::now();
        sink += work();
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    double first = std::max(once(), 1e-7);
    std::size_t runs = std::clamp<std::size_t>(static_cast<std::size_t>(seconds / first), 5, 401) | 1;
    std::vector<double> times(runs);
    for (double& time : times)
        time = once();
    std::sort(times.begin(), times.end());
    double megabytes = static_cast<double>(bytes) / 1e6;
    return { megabytes / times[runs / 2], megabytes / times.front() };
}

std::vector<std::string> vectorNames(const fs::path& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == ".lzfse" && fs::exists(fs::path(entry.path()).replace_extension(".raw")))
            names.push_back(entry.path().stem().string());
    }
    std::sort(names.begin(), names.end(), [&](const std::string& a, const std::string& b) {
        return fs::file_size(folder / (a + ".raw")) < fs::file_size(folder / (b + ".raw"));
    });
    return names;
}

bool report(const fs::path& folder, const std::string& name, double seconds)
{
    Bytes raw = readFile(folder / (name + ".raw"));
    Bytes reference = readFile(folder / (name + ".lzfse"));
    Bytes ours = tarnwick::Lzfse::encode(raw);
    auto fromReference = tarnwick::Lzfse::decode(reference, raw.size());
    auto fromOurs = tarnwick::Lzfse::decode(ours, raw.size());
    if (!fromReference || *fromReference != raw || !fromOurs || *fromOurs != raw) {
        std::printf("%-20s DECODING MISMATCH\n", name.c_str());
        return false;
    }
    Speed encode = measure(raw.size(), seconds, [&] { return tarnwick::Lzfse::encode(raw).size(); });
    Speed decodeReference = measure(raw.size(), seconds, [&] { return tarnwick::Lzfse::decode(reference, raw.size())->size(); });
    Speed decodeOurs = measure(raw.size(), seconds, [&] { return tarnwick::Lzfse::decode(ours, raw.size())->size(); });
    double change = reference.empty() ? 0 : 100.0 * (static_cast<double>(ours.size()) / static_cast<double>(reference.size()) - 1);
    std::printf("%-20s %9zu %9zu %9zu %+7.2f%% %8.1f %8.1f %8.1f %8.1f %8.1f %8.1f\n", name.c_str(), raw.size(), reference.size(),
        ours.size(), change, encode.median, encode.best, decodeReference.median, decodeReference.best, decodeOurs.median, decodeOurs.best);
    return true;
}

}

int main(int argc, char** argv)
{
    fs::path folder = argc > 1 ? argv[1] : defaultFolder;
    double seconds = argc > 2 ? std::stod(argv[2]) : 1.0;
    if (!fs::is_directory(folder)) {
        std::fprintf(stderr, "codec: no vector folder at %s\n", folder.c_str());
        return 1;
    }
    std::printf("%-20s %9s %9s %9s %8s %17s %17s %17s\n", "vector", "raw", "reference", "ours", "size", "encode MB/s",
        "decode ref MB/s", "decode own MB/s");
    std::printf("%-20s %9s %9s %9s %8s %8s %8s %8s %8s %8s %8s\n", "", "bytes", "bytes", "bytes", "vs ref", "median", "best", "median",
        "best", "median", "best");
    bool allMatch = true;
    for (const std::string& name : vectorNames(folder))
        allMatch = report(folder, name, seconds) && allMatch;
    return allMatch && sink > 0 ? 0 : 1;
}
