#include "DemoTree.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <random>

namespace tarnwick::DemoTree {

namespace {

constexpr std::int64_t kilobyte = 1000;
constexpr std::int64_t megabyte = 1000 * kilobyte;
constexpr const char* completeMark = ".complete";

struct Maker {
    std::string root;
    std::mt19937_64 random { 20240611 };
    bool failed = false;

    std::int64_t between(std::int64_t low, std::int64_t high) { return std::uniform_int_distribution<std::int64_t>(low, high)(random); }

    // A file of size bytes, all of them reserved on disk, changed daysAgo days ago. A larger
    // logical size than reserved makes the rest a hole, as in a sparse disk image.
    void file(const std::string& relative, std::int64_t reserved, std::int64_t daysAgo, std::int64_t logical = -1)
    {
        // A tenth of a real home: the proportions are what the pictures show, and the disk
        // is shared.
        if (reserved >= 40'000)
            reserved /= 10;
        if (logical >= 40'000)
            logical /= 10;
        std::filesystem::path path = std::filesystem::path(root) / relative;
        std::error_code error;
        std::filesystem::create_directories(path.parent_path(), error);
        int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (fd < 0) {
            std::fprintf(stderr, "screenshots: cannot make %s: %s\n", path.c_str(), std::strerror(errno));
            failed = true;
            return;
        }
        if (reserved > 0 && reserved < 4096) {
            std::string text(static_cast<std::size_t>(reserved), 'x');
            (void)!write(fd, text.data(), text.size());
        } else if (reserved > 0 && posix_fallocate(fd, 0, reserved) != 0) {
            std::fprintf(stderr, "screenshots: cannot reserve space for %s\n", path.c_str());
            failed = true;
        }
        if (logical > reserved)
            (void)!ftruncate(fd, logical);
        std::int64_t seconds = static_cast<std::int64_t>(std::time(nullptr)) - daysAgo * 86400 - between(0, 80000);
        timespec times[2] = { { seconds, 0 }, { seconds, 0 } };
        futimens(fd, times);
        close(fd);
    }

    void many(const std::string& folder, const std::string& stem, const std::string& extension, int count, std::int64_t low,
        std::int64_t high, std::int64_t oldestDays, std::int64_t newestDays = 0)
    {
        for (int i = 1; i <= count; ++i) {
            char name[64];
            std::snprintf(name, sizeof name, "%s%04d.%s", stem.c_str(), i, extension.c_str());
            file(folder + "/" + name, between(low, high), between(newestDays, oldestDays));
        }
    }
};

}

bool makeApplications(const std::string& folder)
{
    struct Entry {
        const char* id;
        const char* name;
        const char* exec;
    };
    const Entry entries[] = {
        { "code", "Visual Studio Code", "/usr/share/code/code" },
        { "steam", "Steam", "/usr/games/steam" },
        { "spotify", "Spotify", "spotify" },
    };
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    for (const Entry& entry : entries) {
        std::string path = folder + "/" + entry.id + ".desktop";
        std::FILE* file = std::fopen(path.c_str(), "w");
        if (!file) {
            std::fprintf(stderr, "screenshots: cannot make %s: %s\n", path.c_str(), std::strerror(errno));
            return false;
        }
        std::fprintf(file, "[Desktop Entry]\nType=Application\nName=%s\nExec=%s\nIcon=%s\n", entry.name, entry.exec, entry.id);
        std::fclose(file);
    }
    return true;
}

bool make(const std::string& root)
{
    std::error_code error;
    // The mark lies beside the tree, so that it is not part of what is scanned.
    const std::string mark = root + completeMark;
    if (std::filesystem::exists(mark, error))
        return true;
    std::filesystem::remove_all(root, error);
    Maker m { root };
    m.file("Videos/Holiday in Lisbon 2023.mp4", 1800 * megabyte, 420);
    m.file("Videos/Kids recital.mov", 950 * megabyte, 150);
    m.many("Videos/Drone", "DJI_", "mp4", 14, 60 * megabyte, 140 * megabyte, 700, 300);
    m.many("Videos/Screen recordings", "Recording ", "webm", 9, 20 * megabyte, 90 * megabyte, 25, 1);
    m.many("Pictures/Camera/2022", "IMG_", "jpg", 260, 2 * megabyte, 5 * megabyte, 900, 500);
    m.many("Pictures/Camera/2023", "IMG_", "jpg", 310, 2 * megabyte, 6 * megabyte, 480, 120);
    m.many("Pictures/Camera/2024", "IMG_", "heic", 180, 1 * megabyte, 4 * megabyte, 100, 2);
    m.many("Pictures/Raw", "DSC", "cr2", 45, 18 * megabyte, 28 * megabyte, 600, 200);
    m.many("Pictures/Screenshots", "Screenshot ", "png", 120, 150 * kilobyte, 900 * kilobyte, 60, 0);
    m.many("Music/Albums/Nils Frahm - Spaces", "Track ", "flac", 12, 25 * megabyte, 45 * megabyte, 1500, 1200);
    m.many("Music/Albums/Khruangbin - Mordechai", "Track ", "flac", 10, 22 * megabyte, 40 * megabyte, 1100, 900);
    m.many("Music/Podcasts", "Episode ", "mp3", 40, 25 * megabyte, 60 * megabyte, 40, 0);
    m.many("Documents/Taxes", "Statement ", "pdf", 36, 200 * kilobyte, 3 * megabyte, 1400, 30);
    m.many("Documents/Thesis", "Chapter ", "docx", 9, 1 * megabyte, 12 * megabyte, 800, 700);
    m.many("Documents/Notes", "note-", "md", 140, 200, 3000, 365, 0);
    m.file("Documents/Thesis/figures.key", 310 * megabyte, 720);
    m.many("Projects/tarnwick/src", "Module", "cpp", 220, 1500, 24000, 20, 0);
    m.many("Projects/tarnwick/build", "object", "o", 260, 80 * kilobyte, 1200 * kilobyte, 2, 0);
    m.file("Projects/tarnwick/build/tarnwick", 95 * megabyte, 0);
    m.many("Projects/tarnwick/.git/objects/pack", "pack-", "pack", 6, 20 * megabyte, 60 * megabyte, 30, 0);
    m.many("Projects/webshop/node_modules/react/cjs", "react-", "js", 60, 2000, 90000, 200, 150);
    m.many("Projects/webshop/node_modules/typescript/lib", "lib.", "js", 40, 100 * kilobyte, 9 * megabyte, 200, 150);
    m.many("Projects/webshop/node_modules/@babel/core/lib", "babel-", "js", 120, 1000, 40000, 200, 150);
    m.many("Projects/webshop/src", "component", "tsx", 80, 800, 12000, 90, 3);
    m.file("Projects/llm-notes/models/mistral-7b-q4.gguf", 2100 * megabyte, 60);
    m.file("Projects/llm-notes/models/whisper-small.safetensors", 480 * megabyte, 75);
    m.many("Projects/llm-notes/data", "shard-", "parquet", 12, 30 * megabyte, 80 * megabyte, 70, 40);
    m.many(".cache/pip/http", "wheel-", "whl", 90, 200 * kilobyte, 12 * megabyte, 120, 0);
    m.many(".cache/thumbnails/large", "thumb-", "png", 400, 20 * kilobyte, 90 * kilobyte, 60, 0);
    m.many(".cache/mozilla/firefox/cache2/entries", "", "bin", 300, 5 * kilobyte, 900 * kilobyte, 10, 0);
    m.many(".cache/huggingface/hub", "blob-", "bin", 6, 80 * megabyte, 260 * megabyte, 80, 20);
    m.many(".local/share/Trash/files", "old-export-", "zip", 8, 30 * megabyte, 120 * megabyte, 200, 5);
    m.many(".var/app/org.mozilla.firefox/data", "places-", "sqlite", 6, 5 * megabyte, 40 * megabyte, 5, 0);
    // A virtual disk of 40 GB of which 3.2 GB are in use.
    m.file("VirtualBox VMs/Debian Test/Debian Test.vdi", 3200 * megabyte, 14, 40'000 * megabyte);
    m.file("Downloads/debian-12.5.0-amd64-netinst.iso", 660 * megabyte, 90);
    m.many("Downloads", "invoice-", "pdf", 25, 80 * kilobyte, 600 * kilobyte, 300, 1);
    m.file("Downloads/fonts.zip", 48 * megabyte, 400);
    m.many(".local/state/logs", "session-", "log", 30, 100 * kilobyte, 4 * megabyte, 30, 0);
    m.many(".local/share/Steam/steamapps/common/Portal 2", "pak", "vpk", 24, 40 * megabyte, 90 * megabyte, 500, 300);
    m.many(".config/Code/User/workspaceStorage", "state-", "vscdb", 30, 1 * megabyte, 9 * megabyte, 20, 0);
    m.many(".vscode/extensions/ms-vscode.cpptools/bin", "cpptools-", "bin", 8, 20 * megabyte, 60 * megabyte, 40, 10);
    m.many(".cache/spotify/Data", "chunk-", "file", 60, 2 * megabyte, 6 * megabyte, 14, 0);
    m.many(".claude/projects", "session-", "jsonl", 40, 200 * kilobyte, 3 * megabyte, 10, 0);
    if (m.failed)
        return false;
    int fd = open(mark.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd >= 0)
        close(fd);
    return true;
}

}
