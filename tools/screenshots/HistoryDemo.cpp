#include "HistoryDemo.hpp"

#include "History/HistoryStore.hpp"
#include "Scanning/ScanTree.hpp"
#include "Scanning/TreeBuilder.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace tarnwick::HistoryDemo {

namespace {

constexpr std::int64_t megabyte = 1'000'000;
constexpr std::int64_t gigabyte = 1'000'000'000;

// A tenth of a real size, as in the rest of the demo home.
bool reserve(const std::string& path, std::int64_t bytes)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0 || posix_fallocate(fd, 0, bytes / 10) != 0) {
        std::fprintf(stderr, "screenshots: cannot make %s: %s\n", path.c_str(), std::strerror(errno));
        if (fd >= 0)
            ::close(fd);
        return false;
    }
    ::close(fd);
    return true;
}

struct Change {
    const char* path;
    std::int64_t bytes;
};

constexpr Change deletedThisWeek[] {
    { "Videos/Exports/draft-cut-v1.mov", 4200 * megabyte },
    { "Videos/Exports/draft-cut-v2.mov", 3900 * megabyte },
    { ".cache/pip/http/wheel-torch-2.3.whl", 780 * megabyte },
};

constexpr Change addedThisWeek[] {
    { "Projects/llm-notes/models/llama-3-8b-q5.gguf", 5600 * megabyte },
    { "Downloads/ubuntu-24.04-desktop-amd64.iso", 5900 * megabyte },
    { ".cache/huggingface/hub/blob-llama-tokenizer.bin", 1800 * megabyte },
    { "Pictures/Camera/2024/IMG_holiday-burst.heic", 900 * megabyte },
    { "Projects/tarnwick/build/tarnwick-debug", 620 * megabyte },
};

}

bool makeWeekAgo(const std::string& home)
{
    bool made = true;
    for (const Change& change : deletedThisWeek)
        made = reserve(home + "/" + change.path, change.bytes) && made;
    std::error_code error;
    for (const Change& change : addedThisWeek)
        std::filesystem::remove(home + "/" + change.path, error);
    return made;
}

bool makeToday(const std::string& home)
{
    bool made = true;
    std::error_code error;
    for (const Change& change : deletedThisWeek)
        std::filesystem::remove(home + "/" + change.path, error);
    for (const Change& change : addedThisWeek)
        made = reserve(home + "/" + change.path, change.bytes) && made;
    return made;
}

bool recordDiskMonth(HistoryStore& store, Date now)
{
    const std::int64_t capacity = 500 * gigabyte;
    std::int64_t available = 212 * gigabyte;
    for (int day = 29; day >= 0; --day) {
        // About 1.4 GB a day, a little more on some days than on others.
        available -= static_cast<std::int64_t>((1.4 + 0.5 * std::sin(day * 1.7)) * gigabyte);
        if (day == 17)
            available -= 24 * gigabyte; // a game downloaded
        if (day == 6)
            available += 31 * gigabyte; // the trash emptied
        Date date = now - std::chrono::days(day) - std::chrono::hours(3);
        if (!store.recordMeasurement(diskVolume, VolumeMeasurement { date, capacity, available, std::nullopt }))
            return false;
    }
    return true;
}

std::shared_ptr<const ScanTree> unreadableScan(const std::string& home)
{
    TreeBuilder builder("alex", NodeKind::directory, std::nullopt);
    auto folder = [&builder](NodeID parent, const char* name, std::int64_t bytes) {
        return builder.addNode(parent, name, NodeKind::directory, bytes, bytes, 0, TreeDate::noDate, TreeDate::noDate, false);
    };
    NodeID root = NodeID::root();
    NodeID documents = folder(root, "Documents", 400 * megabyte);
    NodeID taxes = folder(documents, "Taxes", 0);
    NodeID local = folder(root, ".local", 0);
    NodeID share = folder(local, "share", 0);
    NodeID keyrings = folder(share, "keyrings", 0);
    NodeID flatpak = folder(root, ".var", 0);
    NodeID app = folder(flatpak, "app", 0);
    NodeID signal = folder(app, "org.signal.Signal", 0);
    NodeID telegram = folder(app, "org.telegram.desktop", 0);
    NodeID projects = folder(root, "Projects", 2 * gigabyte);
    NodeID dockerData = folder(projects, "postgres-data", 0);
    NodeID build = folder(projects, "build", 0);
    NodeID temporary = folder(build, "tmp-linking", 0);
    for (NodeID refused : { taxes, keyrings, signal, telegram, dockerData })
        builder.recordIssue(refused, IssueKind::permissionDenied, EACCES, std::strerror(EACCES));
    builder.recordIssue(temporary, IssueKind::notFound, ENOENT, std::strerror(ENOENT));
    return std::move(builder).finalize(home, ScanCoverage::whole(), TreeBuilder::Metadata::included);
}

}
