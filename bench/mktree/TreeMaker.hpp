#pragma once

// The writer mktree's parts are made with: a portable random stream, a per-job maker that
// creates entries relative to open folder descriptors and counts them, and a depth-first
// filler for nested folders.

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mktree {

constexpr std::uint64_t treeSeed = 0x7461'726e'7769'636bull;
constexpr std::int64_t datesFrom = 1'388'534'400; // 2014-01-01 UTC
constexpr std::int64_t dateSpan = 11ll * 365 * 86'400;

[[noreturn]] inline void fail(std::string_view what, std::string_view path, int error)
{
    std::fprintf(stderr, "mktree: cannot %.*s %.*s: %s\n", int(what.size()), what.data(), int(path.size()),
        path.data(), std::strerror(error));
    std::_Exit(1);
}

// splitmix64: small, fast and the same everywhere, unlike the standard distributions.
class Random {
public:
    explicit Random(std::uint64_t state) : m_state(state) { }

    std::uint64_t next()
    {
        std::uint64_t z = (m_state += 0x9e37'79b9'7f4a'7c15ull);
        z = (z ^ (z >> 30)) * 0xbf58'476d'1ce4'e5b9ull;
        z = (z ^ (z >> 27)) * 0x94d0'49bb'1331'11ebull;
        return z ^ (z >> 31);
    }
    std::uint64_t below(std::uint64_t n) { return n == 0 ? 0 : next() % n; }
    std::uint64_t between(std::uint64_t low, std::uint64_t high) { return low + below(high - low + 1); }
    bool chance(unsigned percent) { return below(1000) < percent * 10; }
    bool permille(unsigned perThousand) { return below(1000) < perThousand; }

    // Roughly log-uniform in [low, high] using integers only: a random power of two, then a
    // uniform value inside it, so the sizes stay identical on every machine.
    std::uint64_t spread(std::uint64_t low, std::uint64_t high)
    {
        int lowBit = 63 - __builtin_clzll(std::max<std::uint64_t>(low, 1));
        int highBit = 63 - __builtin_clzll(std::max<std::uint64_t>(high, 1));
        int bit = lowBit + int(below(std::uint64_t(highBit - lowBit + 1)));
        std::uint64_t value = (1ull << bit) + below(1ull << bit);
        return std::clamp(value, low, high);
    }

    template<typename T, std::size_t N>
    const T& pick(const std::array<T, N>& items) { return items[below(N)]; }

private:
    std::uint64_t m_state;
};

inline std::uint64_t mix(std::uint64_t a, std::uint64_t b)
{
    Random random(a ^ (b * 0x9e37'79b9'7f4a'7c15ull));
    random.next();
    return random.next();
}

// What a job made; the job adds its own into the shared total at the end.
struct Tally {
    std::uint64_t files = 0;
    std::uint64_t folders = 0;
    std::uint64_t symlinks = 0;
    std::uint64_t hardLinks = 0;
    std::uint64_t others = 0;
    std::uint64_t bytesWritten = 0;
    std::uint64_t apparentBytes = 0;

    [[nodiscard]] std::uint64_t entries() const { return files + folders + symlinks + hardLinks + others; }
    void add(const Tally& other)
    {
        files += other.files;
        folders += other.folders;
        symlinks += other.symlinks;
        hardLinks += other.hardLinks;
        others += other.others;
        bytesWritten += other.bytesWritten;
        apparentBytes += other.apparentBytes;
    }
};

// The bytes every file's written part is copied from.
inline std::vector<char> makeContent()
{
    std::vector<char> bytes(1 << 20);
    Random random(treeSeed);
    for (std::size_t i = 0; i < bytes.size(); i += 8) {
        std::uint64_t value = random.next();
        std::memcpy(bytes.data() + i, &value, 8);
    }
    return bytes;
}
inline const std::vector<char> content = makeContent();

struct Dir {
    int fd = -1;
    std::string path;
};

// One job's writer: creates entries relative to open folder descriptors, counts them and
// gives each a date from the job's own random stream. A name that is already taken gets a
// numbered suffix, so random names never make a job fail.
class Maker {
public:
    Maker(std::uint64_t seed) : m_random(seed) { }

    Random& random() { return m_random; }
    [[nodiscard]] const Tally& tally() const { return m_tally; }
    [[nodiscard]] std::uint64_t made() const { return m_tally.entries(); }

    Dir open(int base, const std::string& basePath, const std::string& relative)
    {
        int fd = openat(base, relative.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (fd < 0)
            fail("open", basePath + "/" + relative, errno);
        return Dir { fd, basePath + "/" + relative };
    }

    Dir folder(const Dir& parent, std::string name)
    {
        for (int attempt = 1; mkdirat(parent.fd, name.c_str(), 0755) != 0; ++attempt) {
            if (errno != EEXIST)
                fail("make folder", parent.path + "/" + name, errno);
            name = renamed(name, attempt);
        }
        ++m_tally.folders;
        return open(parent.fd, parent.path, name);
    }

    void close(Dir& dir)
    {
        stampAndClose(dir.fd, dir.path);
        dir.fd = -1;
    }

    // A file with `written` bytes of data at offset 0 and, when `apparent` is larger, a hole
    // up to that size.
    std::string file(const Dir& parent, std::string name, std::uint64_t written, std::uint64_t apparent = 0)
    {
        int fd = create(parent, name);
        writeAt(fd, parent, name, 0, written);
        apparent = std::max(apparent, written);
        if (apparent > written && ftruncate(fd, off_t(apparent)) != 0)
            fail("size", parent.path + "/" + name, errno);
        ++m_tally.files;
        m_tally.apparentBytes += apparent;
        stampAndClose(fd, parent.path + "/" + name);
        return name;
    }

    // A sparse file of `apparent` bytes with data only in the given regions.
    void sparseFile(const Dir& parent, std::string name, std::uint64_t apparent,
        std::initializer_list<std::pair<std::uint64_t, std::uint64_t>> regions)
    {
        int fd = create(parent, name);
        for (auto [offset, length] : regions)
            writeAt(fd, parent, name, offset, length);
        if (ftruncate(fd, off_t(apparent)) != 0)
            fail("size", parent.path + "/" + name, errno);
        ++m_tally.files;
        m_tally.apparentBytes += apparent;
        stampAndClose(fd, parent.path + "/" + name);
    }

    // Space reserved without data: with keepSize the allocation runs past the end of file.
    void preallocated(const Dir& parent, std::string name, std::uint64_t written, std::uint64_t reserved, bool keepSize)
    {
        int fd = create(parent, name);
        writeAt(fd, parent, name, 0, written);
        if (fallocate(fd, keepSize ? FALLOC_FL_KEEP_SIZE : 0, 0, off_t(reserved)) != 0)
            fail("reserve space for", parent.path + "/" + name, errno);
        ++m_tally.files;
        m_tally.apparentBytes += keepSize ? written : std::max(written, reserved);
        stampAndClose(fd, parent.path + "/" + name);
    }

    void symlink(const Dir& parent, std::string name, const std::string& target)
    {
        for (int attempt = 1; symlinkat(target.c_str(), parent.fd, name.c_str()) != 0; ++attempt) {
            if (errno != EEXIST)
                fail("make link", parent.path + "/" + name, errno);
            name = renamed(name, attempt);
        }
        stamp(parent, name);
        ++m_tally.symlinks;
    }

    // Dates an entry made without a descriptor of its own (links, pipes, finished folders).
    void stamp(const Dir& parent, const std::string& name)
    {
        timespec times[2];
        times[0] = times[1] = someDate();
        utimensat(parent.fd, name.c_str(), times, AT_SYMLINK_NOFOLLOW);
    }

    void hardLink(const Dir& from, const std::string& fromName, const Dir& to, std::string name)
    {
        for (int attempt = 1; linkat(from.fd, fromName.c_str(), to.fd, name.c_str(), 0) != 0; ++attempt) {
            if (errno != EEXIST)
                fail("make hard link", to.path + "/" + name, errno);
            name = renamed(name, attempt);
        }
        ++m_tally.hardLinks;
    }

    void fifo(const Dir& parent, const std::string& name)
    {
        if (mkfifoat(parent.fd, name.c_str(), 0600) != 0)
            fail("make pipe", parent.path + "/" + name, errno);
        stamp(parent, name);
        ++m_tally.others;
    }

    // Most files hold up to 8 KB (a sixth are empty); one in 1,000 holds up to 1 MB.
    std::uint64_t smallSize()
    {
        if (m_random.chance(16))
            return 0;
        if (m_random.below(1000) == 0)
            return m_random.spread(8 << 10, 1 << 20);
        return m_random.spread(1, 8 << 10);
    }

private:
    static std::string renamed(const std::string& name, int attempt)
    {
        std::string base = attempt == 1 ? name : name.substr(0, name.rfind('~'));
        return base + "~" + std::to_string(attempt);
    }

    int create(const Dir& parent, std::string& name)
    {
        for (int attempt = 1;; ++attempt) {
            int fd = openat(parent.fd, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
            if (fd >= 0)
                return fd;
            if (errno != EEXIST)
                fail("create", parent.path + "/" + name, errno);
            name = renamed(name, attempt);
        }
    }

    void writeAt(int fd, const Dir& parent, const std::string& name, std::uint64_t offset, std::uint64_t length)
    {
        m_tally.bytesWritten += length;
        while (length > 0) {
            std::size_t chunk = std::size_t(std::min<std::uint64_t>(length, content.size()));
            std::size_t start = std::size_t(offset % 4096);
            chunk = std::min(chunk, content.size() - start);
            ssize_t done = pwrite(fd, content.data() + start, chunk, off_t(offset));
            if (done <= 0)
                fail("write", parent.path + "/" + name, done < 0 ? errno : EIO);
            offset += std::uint64_t(done);
            length -= std::uint64_t(done);
        }
    }

    timespec someDate()
    {
        return timespec { time_t(datesFrom + std::int64_t(m_random.below(dateSpan))), long(m_random.below(1'000'000'000)) };
    }

    void stampAndClose(int fd, const std::string& path)
    {
        timespec times[2];
        times[0] = times[1] = someDate();
        futimens(fd, times);
        if (::close(fd) != 0)
            fail("close", path, errno);
    }

    Random m_random;
    Tally m_tally;
};

// Folders filled depth-first with a few files each, until the budget is spent. An explicit
// stack of open folders keeps the descriptor count at the depth.
struct NestedStyle {
    int maxDepth = 4;
    int minFiles = 2;
    int maxFiles = 12;
    int minFolders = 0;
    int maxFolders = 4;
    std::string (*folderName)(Random&) = nullptr;
    std::string (*fileName)(Random&) = nullptr;
    unsigned hardLinkPercent = 0; // of files, mirrored into `links` when given
};

inline void makeNested(Maker& maker, Dir& root, std::uint64_t budget, const NestedStyle& style, const Dir* links = nullptr)
{
    struct Frame {
        Dir dir;
        int depth;
        std::uint64_t foldersLeft;
    };
    std::uint64_t start = maker.made();
    auto spent = [&] { return maker.made() - start >= budget; };
    auto fill = [&](const Dir& dir) {
        int files = int(maker.random().between(std::uint64_t(style.minFiles), std::uint64_t(style.maxFiles)));
        for (int i = 0; i < files && !spent(); ++i) {
            std::string name = maker.file(dir, style.fileName(maker.random()), maker.smallSize());
            if (links != nullptr && maker.random().chance(style.hardLinkPercent))
                maker.hardLink(dir, name, *links, std::to_string(maker.made()) + " " + name);
        }
    };
    std::vector<Frame> stack;
    fill(root);
    stack.push_back(Frame { Dir { root.fd, root.path }, 0, UINT64_MAX });
    while (!stack.empty()) {
        Frame& top = stack.back();
        if (top.foldersLeft == 0 || spent()) {
            if (stack.size() > 1)
                maker.close(top.dir);
            stack.pop_back();
            continue;
        }
        --top.foldersLeft;
        int depth = top.depth + 1;
        Dir child = maker.folder(top.dir, style.folderName(maker.random()));
        fill(child);
        std::uint64_t folders = depth >= style.maxDepth ? 0
                                                        : maker.random().between(std::uint64_t(style.minFolders), std::uint64_t(style.maxFolders));
        stack.push_back(Frame { std::move(child), depth, folders });
    }
}

} // namespace mktree
