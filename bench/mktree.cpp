// mktree DEST --entries N [--threads T]
//
// Makes a tree shaped like a home folder for the scan benchmarks: huge flat folders, chains
// 100 deep, node_modules swarms, git object fan-outs, caches, a few large media files,
// sparse and preallocated files, hard links, symbolic links (to a large folder, in loops,
// dangling) and names with blanks, NFC and NFD twins and invalid UTF-8 bytes.
//
// The tree depends only on N and the generator version: the work is cut into jobs, each
// with its own random stream seeded from its number, so any thread count makes the same
// names, sizes and dates. Files hold at most a few KB of written data (a few up to 1 MB);
// large apparent sizes come from ftruncate, so making a million entries stays fast.
// A marker written last (by renaming the one written first) lets a rerun skip a complete
// tree and clear away a half-made one.

#include "mktree/HomeParts.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace mktree;

namespace {

constexpr int generatorVersion = 3;
constexpr const char* completeMarker = ".mktree-complete";
constexpr const char* buildingMarker = ".mktree-building";

enum class JobKind { flat, project, cache, documents, appSupport };

struct Job {
    JobKind kind;
    int index;
    std::uint64_t budget;
};

// Folders every part of the tree expects to exist before the jobs run.
constexpr std::array<const char*, 18> skeleton = { "Desktop", "Documents", "Downloads", "Movies", "Music",
    "Pictures", "Library", "Library/Caches", "Library/Application Support", "Library/Mail", "Projects",
    "Projects/deep-nesting", ".cache", ".config", "Backups", "Links", "Virtual Machines", "Public" };

// The flat folders sit this many new folders deep in their place (see makeFlat).
constexpr std::array<std::uint64_t, 4> flatDepth = { 3, 1, 1, 2 };

// The small, fixed parts are made first, on one thread; what remains of N is then shared out
// as budgets to jobs that run in parallel, largest first.
std::vector<Job> planJobs(std::uint64_t entries, std::uint64_t alreadyMade)
{
    std::vector<Job> jobs;
    std::uint64_t flatTotal = entries * 15 / 100;
    int flats = flatTotal >= 10'000 ? int(std::max<std::uint64_t>(1, flatTotal / 15'000)) : 1;
    std::uint64_t planned = alreadyMade + 1; // the marker
    // Sizes spread evenly from 10,000 to twice the mean less 10,000, so the total stays the same.
    std::uint64_t mean = flatTotal / std::uint64_t(flats);
    std::uint64_t smallest = mean >= 10'000 ? 10'000 : mean;
    for (int i = 0; i < flats; ++i) {
        std::uint64_t count = flats == 1 ? mean : smallest + (2 * (mean - smallest)) * std::uint64_t(i) / std::uint64_t(flats - 1);
        jobs.push_back(Job { JobKind::flat, i, count });
        planned += count + flatDepth[std::size_t(i) % flatDepth.size()];
    }
    std::uint64_t rest = entries > planned ? entries - planned : 0;
    auto share = [&](JobKind kind, unsigned percent, std::uint64_t perJob) {
        std::uint64_t total = rest * percent / 100;
        std::uint64_t count = std::max<std::uint64_t>(1, total / perJob);
        for (std::uint64_t i = 0; i < count; ++i)
            jobs.push_back(Job { kind, int(i), std::max<std::uint64_t>(1, total / count) });
    };
    share(JobKind::project, 45, 12'000);
    share(JobKind::cache, 20, 6'000);
    share(JobKind::documents, 15, 8'000);
    share(JobKind::appSupport, 20, 8'000);
    std::stable_sort(jobs.begin(), jobs.end(), [](const Job& a, const Job& b) { return a.budget > b.budget; });
    return jobs;
}

void runJob(Maker& maker, const Dir& home, const Job& job)
{
    switch (job.kind) {
    case JobKind::flat:
        makeFlat(maker, home, job.index, job.budget);
        break;
    case JobKind::project: {
        Dir projects = maker.open(home.fd, home.path, "Projects");
        makeProject(maker, projects, job.index, job.budget);
        maker.close(projects);
        break;
    }
    case JobKind::cache:
        makeCache(maker, home, job.index, job.budget);
        break;
    case JobKind::documents:
        makeDocuments(maker, home, job.index, job.budget);
        break;
    case JobKind::appSupport:
        makeAppSupport(maker, home, job.index, job.budget);
        break;
    }
}

std::uint64_t jobSeed(JobKind kind, int index)
{
    return mix(treeSeed ^ std::uint64_t(generatorVersion), (std::uint64_t(kind) + 1) << 32 | std::uint64_t(index));
}

Tally makeTree(const Dir& home, std::uint64_t entries, unsigned threads)
{
    Maker fixed(jobSeed(JobKind::flat, -1));
    for (const char* folder : skeleton) {
        std::string path(folder);
        std::size_t slash = path.rfind('/');
        Dir parent = slash == std::string::npos ? Dir { home.fd, home.path } : fixed.open(home.fd, home.path, path.substr(0, slash));
        Dir made = fixed.folder(parent, path.substr(slash == std::string::npos ? 0 : slash + 1));
        ::close(made.fd);
        if (parent.fd != home.fd)
            ::close(parent.fd);
    }
    for (int chain = 0, chains = int(std::max<std::uint64_t>(1, entries / 100'000)); chain < chains; ++chain)
        makeChain(fixed, home, chain);
    makeMedia(fixed, home, entries);
    makeOddities(fixed, home, entries);
    makeLinks(fixed, home);

    Tally total = fixed.tally();
    std::vector<Job> jobs = planJobs(entries, total.entries());
    std::atomic<std::size_t> next = 0;
    std::mutex totalLock;
    auto worker = [&] {
        for (std::size_t i = next++; i < jobs.size(); i = next++) {
            Maker maker(jobSeed(jobs[i].kind, jobs[i].index));
            runJob(maker, home, jobs[i]);
            std::lock_guard lock(totalLock);
            total.add(maker.tally());
        }
    };
    std::vector<std::thread> pool;
    for (unsigned i = 0; i < threads; ++i)
        pool.emplace_back(worker);
    for (std::thread& thread : pool)
        thread.join();
    // The shared folders changed while the jobs ran; give them fixed dates too, deepest first.
    for (auto folder = skeleton.rbegin(); folder != skeleton.rend(); ++folder)
        fixed.stamp(home, *folder);
    return total;
}

// ---- Markers and clearing ------------------------------------------------------------------

std::string markerHeader(std::uint64_t requested)
{
    return "tarnwick mktree version " + std::to_string(generatorVersion) + "\nentries-requested "
        + std::to_string(requested) + "\n";
}

std::string readSmallFile(int dirFd, const char* name)
{
    int fd = openat(dirFd, name, O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0)
        return {};
    char buffer[4096];
    ssize_t length = read(fd, buffer, sizeof buffer);
    ::close(fd);
    return length > 0 ? std::string(buffer, std::size_t(length)) : std::string();
}

bool exists(int dirFd, const char* name)
{
    struct stat info;
    return fstatat(dirFd, name, &info, AT_SYMLINK_NOFOLLOW) == 0;
}

bool isEmpty(const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_empty(path, error) && !error;
}

bool isMarker(std::string_view name)
{
    return name == completeMarker || name == buildingMarker;
}

int removeEntry(const char* path, const struct stat*, int type, struct FTW* where)
{
    if (where->level == 0 || (where->level == 1 && isMarker(path + where->base)))
        return 0;
    if ((type == FTW_DP ? rmdir(path) : unlink(path)) != 0)
        fail("remove", path, errno);
    return 0;
}

// Empties a folder that holds a tree of ours, without following links. The markers go last,
// so a folder whose clearing was cut short is still known as ours.
void clearTree(const std::string& path)
{
    if (nftw(path.c_str(), removeEntry, 64, FTW_DEPTH | FTW_PHYS) != 0)
        fail("clear", path, errno);
    for (const char* marker : { completeMarker, buildingMarker })
        if (unlink((path + "/" + marker).c_str()) != 0 && errno != ENOENT)
            fail("remove", path + "/" + marker, errno);
}

bool holdsOurTree(const std::string& path)
{
    for (const char* marker : { completeMarker, buildingMarker })
        if (access((path + "/" + marker).c_str(), F_OK) == 0)
            return true;
    return false;
}

// Moves an older tree aside to delete after the new one is made: ext4 is slow to hand out
// inodes next to ones freed moments ago, which made a rebuild after clearing in place take
// six times as long. Where DEST cannot be renamed (a mount point), it is cleared in place.
std::string setAside(const std::string& dest)
{
    std::string aside = dest + ".discard";
    if (access(aside.c_str(), F_OK) == 0) {
        if (!holdsOurTree(aside)) {
            std::fprintf(stderr, "mktree: %s is in the way and was not made by mktree\n", aside.c_str());
            std::exit(1);
        }
        clearTree(aside);
        if (rmdir(aside.c_str()) != 0)
            fail("remove", aside, errno);
    }
    if (rename(dest.c_str(), aside.c_str()) == 0 && mkdir(dest.c_str(), 0755) == 0)
        return aside;
    std::fprintf(stderr, "mktree: clearing the older or unfinished tree in %s\n", dest.c_str());
    clearTree(dest);
    return {};
}

struct Options {
    std::string dest;
    std::uint64_t entries = 0;
    unsigned threads = 2;
};

constexpr const char* usage = "usage: mktree DEST --entries N [--threads T]\n"
                              "  makes about N entries (2,000 to 50,000,000) under DEST; a DEST that already\n"
                              "  holds the same complete tree is left as it is\n";

bool parseNumber(std::string_view text, std::uint64_t& value)
{
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

bool parseOptions(int argc, char** argv, Options& options)
{
    for (int i = 1; i < argc; ++i) {
        std::string_view argument = argv[i];
        std::uint64_t value = 0;
        if ((argument == "--entries" || argument == "--threads") && i + 1 < argc) {
            if (!parseNumber(argv[++i], value)) {
                std::fprintf(stderr, "mktree: %s needs a whole number, not \"%s\"\n", argument.data(), argv[i]);
                return false;
            }
            if (argument == "--entries")
                options.entries = value;
            else
                options.threads = unsigned(std::clamp<std::uint64_t>(value, 1, 64));
        } else if (!argument.starts_with("-") && options.dest.empty()) {
            options.dest = argument;
        } else {
            std::fprintf(stderr, "mktree: unexpected argument \"%s\"\n%s", argv[i], usage);
            return false;
        }
    }
    if (options.dest.empty() || options.entries < 2'000 || options.entries > 50'000'000) {
        std::fputs(usage, stderr);
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    if (!parseOptions(argc, argv, options))
        return 2;
    while (options.dest.size() > 1 && options.dest.back() == '/')
        options.dest.pop_back();
    std::error_code error;
    std::filesystem::create_directories(options.dest, error);
    if (error)
        fail("make folder", options.dest, error.value());
    int destFd = open(options.dest.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (destFd < 0)
        fail("open", options.dest, errno);

    std::string header = markerHeader(options.entries);
    std::string marker = readSmallFile(destFd, completeMarker);
    if (marker.starts_with(header)) {
        std::printf("mktree: %s already holds the complete tree (%s); not made again\n", options.dest.c_str(),
            marker.substr(header.size(), marker.find('\n', header.size()) - header.size()).c_str());
        return 0;
    }
    std::string aside;
    if (!isEmpty(options.dest)) {
        if (marker.empty() && !exists(destFd, buildingMarker)) {
            std::fprintf(stderr, "mktree: %s holds files that mktree did not make; choose an empty or new folder\n",
                options.dest.c_str());
            return 1;
        }
        aside = setAside(options.dest);
        ::close(destFd);
        destFd = open(options.dest.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (destFd < 0)
            fail("open", options.dest, errno);
    }

    auto started = std::chrono::steady_clock::now();
    int markerFd = openat(destFd, buildingMarker, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (markerFd < 0 || write(markerFd, "building\n", 9) != 9)
        fail("write", options.dest + "/" + buildingMarker, errno);

    Tally tally = makeTree(Dir { destFd, options.dest }, options.entries, options.threads);
    std::uint64_t entries = tally.entries() + 1;
    std::string text = header + "entries " + std::to_string(entries) + "\nbytes-written "
        + std::to_string(tally.bytesWritten) + "\n";
    if (ftruncate(markerFd, 0) != 0 || pwrite(markerFd, text.data(), text.size(), 0) != ssize_t(text.size())
        || ::close(markerFd) != 0)
        fail("write", options.dest + "/" + buildingMarker, errno);
    if (renameat(destFd, buildingMarker, destFd, completeMarker) != 0)
        fail("rename", options.dest + "/" + buildingMarker, errno);
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();

    std::printf("mktree: made %llu entries in %s (files %llu, folders %llu, symlinks %llu, hard links %llu, "
                "other %llu), wrote %llu bytes (apparent %llu), %.1f s with %u thread%s\n",
        (unsigned long long)entries, options.dest.c_str(), (unsigned long long)(tally.files + 1),
        (unsigned long long)tally.folders, (unsigned long long)tally.symlinks, (unsigned long long)tally.hardLinks,
        (unsigned long long)tally.others, (unsigned long long)tally.bytesWritten,
        (unsigned long long)tally.apparentBytes, seconds, options.threads, options.threads == 1 ? "" : "s");
    std::fflush(stdout);
    ::close(destFd);
    if (!aside.empty()) {
        std::fprintf(stderr, "mktree: removing the older tree, set aside in %s\n", aside.c_str());
        clearTree(aside);
        if (rmdir(aside.c_str()) != 0)
            fail("remove", aside, errno);
    }
    return 0;
}
