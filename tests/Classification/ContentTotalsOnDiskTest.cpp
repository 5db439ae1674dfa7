#include "Classification/ContentMap.hpp"
#include "Scanning/FileScanner.hpp"
#include "Support/DiskUsage.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sys/stat.h>

using namespace tarnwick;
using tarnwick::fixtures::TempFolder;

namespace {

// As du counts it: the folder's own blocks and everything below.
std::int64_t allocatedBelow(const std::string& folder)
{
    return tarnwick::fixtures::duTotal(folder);
}

std::int64_t allocatedOf(const std::string& file)
{
    struct stat info;
    lstat(file.c_str(), &info);
    return info.st_blocks * 512;
}

}

// A real folder on disk, scanned, gives per-category totals equal to what lstat says of the
// places each category is expected to hold.
TEST(ContentTotalsOnDisk, CategoryTotalsMatchTheFiles)
{
    TempFolder home;
    home.makeFile("Projects/app/.git/objects/ab/cdef", 40'000);
    home.makeFile("Projects/app/.git/objects/cd/photo.jpg", 20'000);  // inside .git: developer
    home.makeFile("Projects/app/node_modules/lib/index.js", 30'000);
    home.makeFile("Projects/app/main.cpp", 5'000);
    home.makeFile("Library/Caches/com.example/blob.bin", 60'000);
    home.makeFile("Movies/clip.mov", 120'000);
    home.makeFile("Movies/clip2.mp4", 80'000);
    home.makeFile("Pictures/holiday.jpg", 70'000);
    home.makeFile("Music/song.mp3", 50'000);
    home.makeFile("Documents/report.pdf", 25'000);
    home.makeFile("Documents/notes.txt", 3'000);

    FileScanner::Options options;
    options.root = home.path();
    options.progress = std::make_shared<ScanProgress>();
    ScanOutcome outcome = FileScanner(options).scan();
    ASSERT_TRUE(outcome.tree);
    auto content = ContentMap::build(outcome.tree);
    ContentTotals totals = content->totals(NodeID::root());

    std::map<ContentCategory, std::int64_t> expected {
        { ContentCategory::developer, allocatedBelow(home / "Projects") },
        { ContentCategory::caches, allocatedBelow(home / "Library/Caches") },
        { ContentCategory::video, allocatedBelow(home / "Movies") },
        { ContentCategory::photos, allocatedBelow(home / "Pictures") },
        { ContentCategory::music, allocatedBelow(home / "Music") },
        // The blocks of the folder that holds every kind, and of the system's own folder.
        { ContentCategory::other, allocatedOf(home.path()) },
        { ContentCategory::system, allocatedOf(home / "Library") },
        { ContentCategory::documents, allocatedBelow(home / "Documents") },
    };
    std::int64_t sum = 0;
    for (auto [category, bytes] : expected) {
        EXPECT_EQ(totals[category], bytes) << ContentCategories::agentKey(category);
        sum += bytes;
    }
    EXPECT_EQ(totals.bytes, outcome.tree->allocatedSize(NodeID::root()));
    EXPECT_EQ(sum, totals.bytes);
}
