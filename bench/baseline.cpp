// baseline PATH [--threads N]
//
// The ceiling the scanner is measured against: the least work a correct metadata walk can
// do on Linux. Threads share one LIFO stack of folders to read under a mutex and condition
// variable; each lists a folder with getdents64 into a 256 KiB buffer and reads every entry
// with statx relative to the folder's descriptor, never following links or automounting.
// It keeps no tree and no names, only the totals of every entry below PATH (PATH itself is
// not counted; a hard-linked file counts wherever it stands):
//   {"items": N, "allocated": stx_blocks*512 summed, "logical": stx_size summed,
//    "seconds": S, "threads": T, "errors": E}
// Nothing here is a shortcut the scanner could not take too.

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr std::size_t listingBufferBytes = 256 * 1024;
constexpr int statxFlags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC;
constexpr unsigned statxMask = STATX_BASIC_STATS | STATX_BTIME;

// An open folder; its children are opened relative to it, so it stays open until the last
// child waiting on the stack has been opened.
struct Folder {
    explicit Folder(int descriptor) : fd(descriptor) { }
    ~Folder() { close(fd); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    int fd;
};

struct Pending {
    std::shared_ptr<Folder> parent;
    std::string name;
};

struct alignas(64) Totals {
    std::uint64_t items = 0;
    std::uint64_t allocated = 0;
    std::uint64_t logical = 0;
    std::uint64_t errors = 0;
};

struct linux_dirent64 {
    ino64_t d_ino;
    off64_t d_off;
    unsigned short d_reclen;
    unsigned char d_type;
    char d_name[];
};

class Walk {
public:
    explicit Walk(unsigned threads) : m_threads(threads) { }

    void start(std::shared_ptr<Folder> root) { m_rootListing = std::move(root); }

    void work(Totals& totals)
    {
        std::vector<char> buffer(listingBufferBytes);
        std::shared_ptr<Folder> folder = takeRoot();
        for (;;) {
            if (folder != nullptr)
                list(*folder, folder, buffer, totals);
            std::optional<Pending> next = pop();
            if (!next)
                return;
            int fd = openat(next->parent->fd, next->name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            next->parent.reset();
            if (fd < 0) {
                ++totals.errors;
                folder.reset();
                continue;
            }
            folder = std::make_shared<Folder>(fd);
        }
    }

private:
    std::shared_ptr<Folder> takeRoot()
    {
        std::lock_guard lock(m_lock);
        return std::exchange(m_rootListing, nullptr);
    }

    void list(const Folder& folder, const std::shared_ptr<Folder>& self, std::vector<char>& buffer, Totals& totals)
    {
        std::vector<Pending> children;
        for (;;) {
            long length = syscall(SYS_getdents64, folder.fd, buffer.data(), buffer.size());
            if (length <= 0) {
                if (length < 0)
                    ++totals.errors;
                break;
            }
            for (long offset = 0; offset < length;) {
                auto* entry = reinterpret_cast<linux_dirent64*>(buffer.data() + offset);
                offset += entry->d_reclen;
                const char* name = entry->d_name;
                if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)))
                    continue;
                struct statx info;
                if (statx(folder.fd, name, statxFlags, statxMask, &info) != 0) {
                    ++totals.errors;
                    continue;
                }
                ++totals.items;
                totals.allocated += info.stx_blocks * 512;
                totals.logical += info.stx_size;
                if (S_ISDIR(info.stx_mode))
                    children.push_back(Pending { self, name });
            }
        }
        if (!children.empty())
            push(std::move(children));
    }

    void push(std::vector<Pending>&& children)
    {
        std::lock_guard lock(m_lock);
        for (Pending& child : children)
            m_stack.push_back(std::move(child));
        if (m_idle > 0)
            children.size() > 1 ? m_wake.notify_all() : m_wake.notify_one();
    }

    // The walk is over when the stack is empty and every thread is waiting for work.
    std::optional<Pending> pop()
    {
        std::unique_lock lock(m_lock);
        ++m_idle;
        while (m_stack.empty()) {
            if (m_finished || m_idle == m_threads) {
                m_finished = true;
                m_wake.notify_all();
                return std::nullopt;
            }
            m_wake.wait(lock);
        }
        --m_idle;
        Pending next = std::move(m_stack.back());
        m_stack.pop_back();
        return next;
    }

    unsigned m_threads;
    std::mutex m_lock;
    std::condition_variable m_wake;
    std::vector<Pending> m_stack;
    std::shared_ptr<Folder> m_rootListing;
    unsigned m_idle = 0;
    bool m_finished = false;
};

bool parseArguments(int argc, char** argv, std::string& path, unsigned& threads)
{
    for (int i = 1; i < argc; ++i) {
        std::string_view argument = argv[i];
        if (argument == "--threads" && i + 1 < argc) {
            std::string_view text = argv[++i];
            auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), threads);
            if (error != std::errc() || end != text.data() + text.size() || threads == 0 || threads > 256)
                return false;
        } else if (path.empty() && !argument.starts_with("--")) {
            path = argument;
        } else {
            return false;
        }
    }
    return !path.empty();
}

} // namespace

int main(int argc, char** argv)
{
    std::string path;
    unsigned threads = std::max(1u, std::thread::hardware_concurrency());
    if (!parseArguments(argc, argv, path, threads)) {
        std::fputs("usage: baseline PATH [--threads N]   (N from 1 to 256)\n", stderr);
        return 2;
    }
    auto started = std::chrono::steady_clock::now();
    int rootFd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (rootFd < 0) {
        std::fprintf(stderr, "baseline: cannot open %s: %s\n", path.c_str(), std::strerror(errno));
        return 1;
    }
    Walk walk(threads);
    walk.start(std::make_shared<Folder>(rootFd));
    std::vector<Totals> totals(threads);
    std::vector<std::thread> pool;
    for (unsigned i = 0; i < threads; ++i)
        pool.emplace_back([&walk, &totals, i] { walk.work(totals[i]); });
    for (std::thread& thread : pool)
        thread.join();
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();

    Totals sum;
    for (const Totals& part : totals) {
        sum.items += part.items;
        sum.allocated += part.allocated;
        sum.logical += part.logical;
        sum.errors += part.errors;
    }
    std::printf("{\"items\": %llu, \"allocated\": %llu, \"logical\": %llu, \"seconds\": %.6f, \"threads\": %u, "
                "\"errors\": %llu}\n",
        (unsigned long long)sum.items, (unsigned long long)sum.allocated, (unsigned long long)sum.logical, seconds,
        threads, (unsigned long long)sum.errors);
    return 0;
}
