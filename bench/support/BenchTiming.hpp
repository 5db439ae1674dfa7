#pragma once

// Shared by the in-process benchmarks: a small deterministic generator, so every run times
// the same synthetic tree, the folder names such trees are made of, and repeated timing.

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace tarnwick::bench {

struct SplitMix {
    std::uint64_t state;
    std::uint64_t next()
    {
        std::uint64_t z = (state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(next() % bound); }
};

// Folder names of a home folder: about half say something to the classifier.
inline constexpr std::array<std::string_view, 40> folderNames {
    "Documents", "Projects", "node_modules", ".git", "Caches", "src", "lib", "assets", "build", "target",
    "Pictures", "Movies", "Music", "Library", "Application Support", ".venv", "site-packages", "Logs", "tmp", "DerivedData",
    "data", "images", "docs", "test", "vendor", "modules", "components", "utils", "include", "Resources",
    "Contents", "Frameworks", "old backup", ".claude", "models", "Cache", "Mail", "Downloads", "archive", "Project.xcodeproj",
};

struct Timing {
    double minimum = 0;
    double median = 0;
};

inline Timing timeRounds(int rounds, const std::function<void()>& work)
{
    std::vector<double> milliseconds;
    for (int r = 0; r < rounds; ++r) {
        auto start = std::chrono::steady_clock::now();
        work();
        milliseconds.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(milliseconds.begin(), milliseconds.end());
    return { milliseconds.front(), milliseconds[milliseconds.size() / 2] };
}

}
