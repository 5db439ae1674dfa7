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

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

namespace {

constexpr int generatorVersion = 2;
constexpr std::uint64_t treeSeed = 0x7461'726e'7769'636bull;
constexpr const char* completeMarker = ".mktree-complete";
constexpr const char* buildingMarker = ".mktree-building";
constexpr std::int64_t datesFrom = 1'388'534'400; // 2014-01-01 UTC
constexpr std::int64_t dateSpan = 11ll * 365 * 86'400;

[[noreturn]] void fail(std::string_view what, std::string_view path, int error)
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

std::uint64_t mix(std::uint64_t a, std::uint64_t b)
{
    Random random(a ^ (b * 0x9e37'79b9'7f4a'7c15ull));
    random.next();
    return random.next();
}

constexpr std::array<std::string_view, 96> words = { "alpha", "amber", "anchor", "apex", "arrow", "aspen",
    "atlas", "axle", "badge", "basil", "beacon", "birch", "blaze", "bloom", "bolt", "brook", "cable", "cactus",
    "canyon", "cedar", "cinder", "cobalt", "comet", "coral", "crane", "crest", "delta", "drift", "ember", "fable",
    "falcon", "fern", "flint", "forge", "frost", "garnet", "glade", "granite", "harbor", "hazel", "helix", "heron",
    "indigo", "iris", "ivory", "jade", "juniper", "kestrel", "lagoon", "lantern", "lark", "ledger", "lumen",
    "maple", "marble", "meadow", "mesa", "mint", "nectar", "nimbus", "nova", "oak", "onyx", "orbit", "otter",
    "pebble", "pine", "pixel", "plume", "prism", "quartz", "quill", "raven", "reef", "ridge", "river", "robin",
    "sable", "sage", "scarlet", "shale", "sierra", "slate", "sparrow", "spruce", "stone", "summit", "swift",
    "thistle", "tide", "timber", "topaz", "tundra", "umber", "vale", "willow" };

std::string hex(Random& random, std::size_t length, bool upper = false)
{
    const char* digits = upper ? "0123456789ABCDEF" : "0123456789abcdef";
    std::string text(length, '0');
    for (char& c : text)
        c = digits[random.below(16)];
    return text;
}

std::string uuid(Random& random)
{
    return hex(random, 8, true) + '-' + hex(random, 4, true) + '-' + hex(random, 4, true) + '-'
        + hex(random, 4, true) + '-' + hex(random, 12, true);
}

std::string number(std::uint64_t value, int width)
{
    std::string digits = std::to_string(value);
    if (int(digits.size()) < width)
        digits.insert(0, std::size_t(width) - digits.size(), '0');
    return digits;
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
std::vector<char> makeContent()
{
    std::vector<char> bytes(1 << 20);
    Random random(treeSeed);
    for (std::size_t i = 0; i < bytes.size(); i += 8) {
        std::uint64_t value = random.next();
        std::memcpy(bytes.data() + i, &value, 8);
    }
    return bytes;
}
const std::vector<char> content = makeContent();

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

void makeNested(Maker& maker, Dir& root, std::uint64_t budget, const NestedStyle& style, const Dir* links = nullptr)
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

std::string wordName(Random& random)
{
    std::string name(random.pick(words));
    if (random.chance(40))
        name += std::string(random.chance(50) ? "-" : "_") + std::string(random.pick(words));
    return name;
}

std::string codeFile(Random& random)
{
    static constexpr std::array<std::string_view, 10> extensions = { ".js", ".ts", ".tsx", ".json", ".css", ".md",
        ".cpp", ".hpp", ".py", ".go" };
    return wordName(random) + std::string(random.pick(extensions));
}

std::string documentFolder(Random& random)
{
    static constexpr std::array<std::string_view, 12> names = { "Archive", "2019", "2021", "Old Stuff", "Scans",
        "Drafts", "Final", "Receipts", "Kunden \xC3\x9C" "bersicht", "Re\xCC\x81sume\xCC\x81s", "Shared with me",
        "Misc" };
    std::string name(random.pick(names));
    if (random.chance(50))
        name += " " + std::to_string(random.between(1, 40));
    return name;
}

std::string documentFile(Random& random)
{
    static constexpr std::array<std::string_view, 14> stems = { "Invoice", "Meeting notes", "Budget", "Report",
        "Letter to bank", "Contract", "Scan", "Draft", "R\xC3\xA9sum\xC3\xA9", "\xC3\x9C" "bersicht", "Plan",
        "\xE8\xAB\x8B\xE6\xB1\x82\xE6\x9B\xB8", "Notes", "Tax return" };
    static constexpr std::array<std::string_view, 9> extensions = { ".pdf", ".docx", ".xlsx", ".pages", ".txt",
        ".key", ".jpg", ".numbers", ".rtf" };
    std::string name = std::string(random.pick(stems)) + " " + std::to_string(random.between(2012, 2025)) + "-"
        + number(random.between(1, 12), 2);
    if (random.chance(15))
        name += random.chance(50) ? " (final)" : " copy";
    return name + std::string(random.pick(extensions));
}

std::string appFolder(Random& random)
{
    static constexpr std::array<std::string_view, 10> names = { "Profiles", "Default", "IndexedDB", "Local Storage",
        "leveldb", "Extensions", "Service Worker", "databases", "Plugins", "blob_storage" };
    return random.chance(60) ? std::string(random.pick(names)) : wordName(random);
}

std::string appFile(Random& random)
{
    static constexpr std::array<std::string_view, 8> extensions = { ".ldb", ".log", ".json", ".sqlite", ".plist",
        ".db-wal", ".bin", "" };
    return random.chance(30) ? number(random.below(1'000'000), 6) + std::string(random.pick(extensions))
                             : wordName(random) + std::string(random.pick(extensions));
}

// ---- The parts of the home folder ------------------------------------------------------

void makePackage(Maker& maker, const Dir& modules, std::string name, bool mayNest, std::vector<std::string>& bins)
{
    Random& random = maker.random();
    Dir package = maker.folder(modules, std::move(name));
    maker.file(package, "package.json", random.between(300, 3000));
    maker.file(package, "README.md", maker.smallSize());
    maker.file(package, random.chance(80) ? "LICENSE" : "LICENSE.md", random.between(1000, 1100));
    maker.file(package, "index.js", maker.smallSize());
    if (random.chance(15))
        maker.file(package, "CHANGELOG.md", maker.smallSize());
    if (random.chance(60)) {
        Dir lib = maker.folder(package, "lib");
        for (std::uint64_t i = random.between(2, 12); i > 0; --i) {
            std::string stem = wordName(random);
            maker.file(lib, stem + ".js", maker.smallSize());
            if (random.chance(50))
                maker.file(lib, stem + ".d.ts", maker.smallSize());
        }
        maker.close(lib);
    }
    if (random.chance(30)) {
        Dir dist = maker.folder(package, "dist");
        for (std::uint64_t i = random.between(1, 4); i > 0; --i)
            maker.file(dist, wordName(random) + (random.chance(50) ? ".min.js" : ".js.map"), maker.smallSize());
        maker.close(dist);
    }
    if (random.chance(8)) {
        Dir bin = maker.folder(package, "bin");
        maker.file(bin, "cli.js", maker.smallSize());
        maker.close(bin);
        bins.push_back(package.path.substr(modules.path.size() + 1));
    }
    if (mayNest && random.chance(10)) {
        Dir nested = maker.folder(package, "node_modules");
        std::vector<std::string> ignored;
        for (std::uint64_t i = random.between(1, 5); i > 0; --i)
            makePackage(maker, nested, wordName(random), false, ignored);
        maker.close(nested);
    }
    maker.close(package);
}

void makeNodeModules(Maker& maker, const Dir& project, std::uint64_t budget)
{
    Random& random = maker.random();
    std::uint64_t start = maker.made();
    Dir modules = maker.folder(project, "node_modules");
    std::vector<std::string> bins;
    while (maker.made() - start < budget) {
        if (random.chance(6)) {
            Dir scope = maker.folder(modules, "@" + std::string(random.pick(words)));
            for (std::uint64_t i = random.between(2, 6); i > 0; --i)
                makePackage(maker, scope, wordName(random), true, bins);
            maker.close(scope);
        } else {
            makePackage(maker, modules, wordName(random), true, bins);
        }
    }
    maker.file(modules, ".package-lock.json", random.spread(8 << 10, 512 << 10));
    Dir bin = maker.folder(modules, ".bin");
    for (const std::string& package : bins)
        maker.symlink(bin, package.substr(package.rfind('/') + 1), "../" + package + "/bin/cli.js");
    maker.close(bin);
    maker.close(modules);
}

void makeGit(Maker& maker, const Dir& project, std::uint64_t budget)
{
    Random& random = maker.random();
    std::uint64_t start = maker.made();
    Dir git = maker.folder(project, ".git");
    maker.file(git, "HEAD", 21);
    maker.file(git, "config", random.between(200, 600));
    maker.file(git, "description", 73);
    maker.file(git, "index", random.spread(4 << 10, 256 << 10));
    maker.file(git, "packed-refs", random.between(100, 4000));
    Dir hooks = maker.folder(git, "hooks");
    for (std::string_view hook : { "applypatch-msg", "commit-msg", "post-update", "pre-applypatch", "pre-commit",
             "pre-merge-commit", "pre-push", "pre-rebase", "pre-receive", "prepare-commit-msg",
             "push-to-checkout", "update", "fsmonitor-watchman" })
        maker.file(hooks, std::string(hook) + ".sample", random.between(400, 4800));
    maker.close(hooks);
    Dir refs = maker.folder(git, "refs");
    Dir heads = maker.folder(refs, "heads");
    maker.file(heads, "main", 41);
    for (std::uint64_t i = random.below(6); i > 0; --i)
        maker.file(heads, wordName(random), 41);
    maker.close(heads);
    Dir tags = maker.folder(refs, "tags");
    maker.close(tags);
    maker.close(refs);

    Dir objects = maker.folder(git, "objects");
    Dir pack = maker.folder(objects, "pack");
    for (std::uint64_t i = random.between(1, 3); i > 0; --i) {
        std::string stem = "pack-" + hex(random, 40);
        maker.file(pack, stem + ".pack", 16 << 10, random.spread(1 << 20, 200 << 20));
        maker.file(pack, stem + ".idx", random.spread(4 << 10, 256 << 10));
    }
    maker.close(pack);
    std::uint64_t used = maker.made() - start;
    std::uint64_t loose = budget > used + 256 + 2 ? (budget - used - 256 - 2) : 0;
    for (unsigned fan = 0; fan < 256; ++fan) {
        char name[3];
        std::snprintf(name, sizeof name, "%02x", fan);
        Dir folder = maker.folder(objects, name);
        std::uint64_t count = (fan == 255) ? (loose > 0 ? loose : 0) : random.below(2 * (loose / (256 - fan)) + 1);
        count = std::min(count, loose);
        loose -= count;
        for (std::uint64_t i = 0; i < count; ++i)
            maker.file(folder, hex(random, 38), random.spread(50, 8 << 10));
        maker.close(folder);
    }
    maker.close(objects);
    maker.close(git);
}

void makeProject(Maker& maker, const Dir& projects, int index, std::uint64_t budget)
{
    Random& random = maker.random();
    std::uint64_t start = maker.made();
    bool javascript = index % 3 != 2;
    Dir project = maker.folder(projects, wordName(random) + "-" + std::to_string(index));
    maker.file(project, "README.md", maker.smallSize());
    maker.file(project, javascript ? "package.json" : "CMakeLists.txt", random.between(300, 3000));
    maker.file(project, ".gitignore", random.between(20, 400));
    makeGit(maker, project, budget * (javascript ? 20 : 35) / 100);
    NestedStyle code { .maxDepth = 4, .minFiles = 3, .maxFiles = 15, .minFolders = 1, .maxFolders = 4,
        .folderName = wordName, .fileName = codeFile };
    Dir src = maker.folder(project, "src");
    std::uint64_t used = maker.made() - start;
    std::uint64_t srcShare = budget * 15 / 100;
    makeNested(maker, src, javascript ? srcShare : (budget > used ? budget - used : 1) / 2, code);
    maker.close(src);
    used = maker.made() - start;
    std::uint64_t rest = budget > used ? budget - used : 1;
    if (javascript) {
        makeNodeModules(maker, project, rest);
    } else {
        NestedStyle objects { .maxDepth = 3, .minFiles = 5, .maxFiles = 40, .minFolders = 1, .maxFolders = 6,
            .folderName = wordName, .fileName = [](Random& r) { return wordName(r) + ".o"; } };
        Dir build = maker.folder(project, "build");
        makeNested(maker, build, rest, objects);
        maker.close(build);
    }
    maker.close(project);
}

// One folder of 10,000 and more files side by side, in one of the places such folders grow.
void makeFlat(Maker& maker, const Dir& home, int index, std::uint64_t count)
{
    Random& random = maker.random();
    Dir base { -1, {} };
    std::vector<Dir> opened;
    opened.reserve(4);
    auto descend = [&](const Dir& from, std::initializer_list<std::string> names) {
        const Dir* at = &from;
        for (const std::string& name : names) {
            opened.push_back(maker.folder(*at, name));
            at = &opened.back();
        }
        return *at;
    };
    switch (index % 4) {
    case 0: {
        Dir mail = maker.open(home.fd, home.path, "Library/Mail");
        base = descend(mail, { uuid(random), "INBOX.mbox", "Messages" });
        for (std::uint64_t i = 0; i < count; ++i)
            maker.file(base, std::to_string(100'000 + i * 7) + ".emlx", random.spread(800, 8 << 10));
        maker.close(mail);
        break;
    }
    case 1: {
        Dir pictures = maker.open(home.fd, home.path, "Pictures");
        base = descend(pictures, { "Screenshots " + std::to_string(index) });
        for (std::uint64_t i = 0; i < count; ++i) {
            std::string name = "Screen Shot " + std::to_string(random.between(2016, 2025)) + "-"
                + number(random.between(1, 12), 2) + "-" + number(random.between(1, 28), 2) + " at "
                + number(random.below(24), 2) + "." + number(random.below(60), 2) + "." + number(random.below(60), 2)
                + ".png";
            maker.file(base, name, 2048, random.spread(100 << 10, 3 << 20));
        }
        maker.close(pictures);
        break;
    }
    case 2: {
        Dir downloads = maker.open(home.fd, home.path, "Downloads");
        base = descend(downloads, { "dataset-export " + std::to_string(index) });
        for (std::uint64_t i = 0; i < count; ++i)
            maker.file(base, "part-" + number(i, 6) + ".csv", maker.smallSize());
        maker.close(downloads);
        break;
    }
    default: {
        Dir support = maker.open(home.fd, home.path, "Library/Application Support");
        base = descend(support, { "Chat Cache " + std::to_string(index), "blob_storage" });
        for (std::uint64_t i = 0; i < count; ++i)
            maker.file(base, hex(random, 32), maker.smallSize());
        maker.close(support);
        break;
    }
    }
    while (!opened.empty()) {
        maker.close(opened.back());
        opened.pop_back();
    }
}

void makeCache(Maker& maker, const Dir& home, int index, std::uint64_t budget)
{
    Random& random = maker.random();
    std::uint64_t start = maker.made();
    if (index % 2 == 0) {
        // An app's cache: a few database files and a swarm of cached responses.
        Dir caches = maker.open(home.fd, home.path, "Library/Caches");
        Dir bundle = maker.folder(caches, "com." + std::string(random.pick(words)) + "." + wordName(random));
        maker.file(bundle, "Cache.db", 8 << 10, random.spread(1 << 20, 64 << 20));
        maker.file(bundle, "Cache.db-wal", maker.smallSize(), random.spread(64 << 10, 4 << 20));
        maker.file(bundle, "Cache.db-shm", 32 << 10);
        Dir data = maker.folder(bundle, "fsCachedData");
        while (maker.made() - start < budget / 2)
            maker.file(data, uuid(random), maker.smallSize());
        maker.close(data);
        Dir chromeLike = maker.folder(bundle, "Cache_Data");
        for (std::uint64_t i = 0; maker.made() - start < budget; ++i)
            maker.file(chromeLike, "f_" + hex(random, 6), maker.smallSize());
        maker.close(chromeLike);
        maker.close(bundle);
        maker.close(caches);
        return;
    }
    // A tool's content-addressed cache: two levels of hex fan-out.
    Dir cache = maker.open(home.fd, home.path, ".cache");
    Dir tool = maker.folder(cache, wordName(random) + "-" + std::to_string(index));
    Dir http = maker.folder(tool, "http");
    while (maker.made() - start < budget) {
        Dir first = maker.folder(http, hex(random, 1));
        for (int i = 0; i < 16 && maker.made() - start < budget; ++i) {
            Dir second = maker.folder(first, hex(random, 1));
            for (std::uint64_t n = random.between(1, 20); n > 0; --n)
                maker.file(second, hex(random, 56), maker.smallSize());
            maker.close(second);
        }
        maker.close(first);
    }
    maker.close(http);
    maker.close(tool);
    maker.close(cache);
}

void makeDocuments(Maker& maker, const Dir& home, int index, std::uint64_t budget)
{
    static constexpr std::array<std::string_view, 12> topics = { "Work", "Tax Returns", "Family Photos",
        "R\xC3\xA9sum\xC3\xA9", "Re\xCC\x81sume\xCC\x81", "Projects 2021", "Invoices", "Zeugnisse \xC3\x9C" "bersicht",
        "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xAE\xE6\x9B\xB8\xE9\xA1\x9E",
        "\xD0\x94\xD0\xBE\xD0\xBA\xD1\x83\xD0\xBC\xD0\xB5\xD0\xBD\xD1\x82\xD1\x8B", "Notes", "School" };
    std::string topic(topics[std::size_t(index) % topics.size()]);
    if (std::size_t(index) >= topics.size())
        topic += " " + std::to_string(index / int(topics.size()) + 1);
    Dir documents = maker.open(home.fd, home.path, "Documents");
    Dir backups = maker.open(home.fd, home.path, "Backups");
    Dir root = maker.folder(documents, topic);
    Dir links = maker.folder(backups, topic);
    NestedStyle style { .maxDepth = 5, .minFiles = 3, .maxFiles = 30, .minFolders = 0, .maxFolders = 5,
        .folderName = documentFolder, .fileName = documentFile, .hardLinkPercent = 4 };
    makeNested(maker, root, budget, style, &links);
    maker.close(links);
    maker.close(root);
    maker.close(backups);
    maker.close(documents);
}

void makeAppSupport(Maker& maker, const Dir& home, int index, std::uint64_t budget)
{
    static constexpr std::array<std::string_view, 8> apps = { "Quill Notes", "Harbor Sync", "Ember Browser",
        "Slate Chat", "Prism Photo", "Tide Music", "Lantern Mail", "Orbit Code" };
    Dir support = maker.open(home.fd, home.path, "Library/Application Support");
    Dir app = maker.folder(support, std::string(apps[std::size_t(index) % apps.size()]) + " " + std::to_string(index));
    NestedStyle style { .maxDepth = 6, .minFiles = 1, .maxFiles = 20, .minFolders = 0, .maxFolders = 4,
        .folderName = appFolder, .fileName = appFile };
    makeNested(maker, app, budget, style);
    maker.close(app);
    maker.close(support);
}

// A chain of 100 folders, one inside the next, with a few files on the way and at the end.
void makeChain(Maker& maker, const Dir& home, int index)
{
    Random& random = maker.random();
    Dir deep = maker.open(home.fd, home.path, "Projects/deep-nesting");
    std::vector<Dir> chain;
    chain.push_back(maker.folder(deep, "chain " + std::to_string(index)));
    for (int level = 0; level < 100; ++level) {
        std::string name = (index % 2 == 0 ? "level " : "l") + number(std::uint64_t(level), 2);
        chain.push_back(maker.folder(chain.back(), name));
        if (random.chance(40))
            for (std::uint64_t i = random.between(1, 2); i > 0; --i)
                maker.file(chain.back(), codeFile(random), maker.smallSize());
    }
    for (int i = 0; i < 10; ++i)
        maker.file(chain.back(), "leaf-" + std::to_string(i) + ".txt", maker.smallSize());
    while (!chain.empty()) {
        maker.close(chain.back());
        chain.pop_back();
    }
    maker.close(deep);
}

// Few, large, mostly sparse files: films, albums, a photo library and virtual disks.
void makeMedia(Maker& maker, const Dir& home, std::uint64_t entries)
{
    Random& random = maker.random();
    Dir movies = maker.open(home.fd, home.path, "Movies");
    for (std::uint64_t i = 0, count = 5 + entries / 100'000; i < count; ++i) {
        std::string name = "Holiday " + std::to_string(random.between(2010, 2025)) + " part " + std::to_string(i) + ".mov";
        maker.file(movies, name, random.chance(25) ? 64 << 10 : 0, random.spread(300ull << 20, 12ull << 30));
    }
    maker.close(movies);

    Dir music = maker.open(home.fd, home.path, "Music");
    Dir media = maker.folder(music, "Media");
    for (std::uint64_t album = 0, albums = 3 + entries / 25'000; album < albums; ++album) {
        Dir artist = maker.folder(media, "The " + wordName(random) + "s");
        Dir record = maker.folder(artist, wordName(random) + " (" + std::to_string(random.between(1970, 2025)) + ")");
        for (std::uint64_t track = 1, tracks = random.between(8, 15); track <= tracks; ++track)
            maker.file(record, number(track, 2) + " " + wordName(random) + ".m4a", 0, random.spread(3 << 20, 12 << 20));
        maker.file(record, "cover.jpg", random.spread(20 << 10, 200 << 10));
        maker.close(record);
        maker.close(artist);
    }
    maker.close(media);
    maker.close(music);

    Dir pictures = maker.open(home.fd, home.path, "Pictures");
    Dir library = maker.folder(pictures, "Photos Library.photoslibrary");
    Dir database = maker.folder(library, "database");
    maker.file(database, "Photos.sqlite", 64 << 10, random.spread(20 << 20, 200 << 20));
    maker.close(database);
    Dir originals = maker.folder(library, "originals");
    Dir derivatives = maker.folder(library, "derivatives");
    std::array<Dir, 16> originalFans, derivativeFans;
    for (int fan = 0; fan < 16; ++fan) {
        originalFans[std::size_t(fan)] = maker.folder(originals, std::string(1, "0123456789ABCDEF"[fan]));
        derivativeFans[std::size_t(fan)] = maker.folder(derivatives, std::string(1, "0123456789ABCDEF"[fan]));
    }
    for (std::uint64_t i = 0, count = 50 + entries / 2'000; i < count; ++i) {
        std::string id = uuid(random);
        std::size_t fan = std::size_t(id[0] >= 'A' ? id[0] - 'A' + 10 : id[0] - '0');
        maker.file(originalFans[fan], id + ".heic", 0, random.spread(1 << 20, 6 << 20));
        maker.file(derivativeFans[fan], id + "_1_105_c.jpeg", maker.smallSize());
    }
    for (int fan = 0; fan < 16; ++fan) {
        maker.close(originalFans[std::size_t(fan)]);
        maker.close(derivativeFans[std::size_t(fan)]);
    }
    maker.close(derivatives);
    maker.close(originals);
    maker.close(library);
    maker.close(pictures);

    Dir machines = maker.open(home.fd, home.path, "Virtual Machines");
    Dir vm = maker.folder(machines, "Linux.vm");
    maker.sparseFile(vm, "disk0.img", 64ull << 30, { { 0, 64 << 10 }, { 8ull << 30, 64 << 10 } });
    maker.preallocated(vm, "swap.img", 0, 64 << 20, false);
    maker.preallocated(vm, "journal (preallocated past its end).log", 4096, 16 << 20, true);
    maker.close(vm);
    maker.close(machines);
}

// Odd names, dot folders, links and pipes: the entries that trip up scanners.
void makeOddities(Maker& maker, const Dir& home, std::uint64_t entries)
{
    Random& random = maker.random();
    for (std::string_view dotfile : { ".bashrc", ".profile", ".gitconfig", ".zsh_history", ".viminfo", ".DS_Store" })
        maker.file(home, std::string(dotfile), maker.smallSize());
    Dir ssh = maker.folder(home, ".ssh");
    for (std::string_view key : { "id_ed25519", "id_ed25519.pub", "known_hosts", "config" })
        maker.file(ssh, std::string(key), random.between(80, 3000));
    maker.close(ssh);
    Dir config = maker.open(home.fd, home.path, ".config");
    NestedStyle style { .maxDepth = 3, .minFiles = 1, .maxFiles = 6, .minFolders = 0, .maxFolders = 3,
        .folderName = wordName, .fileName = appFile };
    makeNested(maker, config, 60 + entries / 20'000, style);
    maker.close(config);
    Dir local = maker.folder(home, ".local");
    Dir state = maker.folder(local, "state");
    maker.fifo(state, "agent.fifo");
    maker.fifo(state, "control pipe");
    maker.close(state);
    maker.close(local);

    Dir downloads = maker.open(home.fd, home.path, "Downloads");
    static constexpr std::array<std::string_view, 30> names = {
        "Caf\xC3\xA9.txt", "Cafe\xCC\x81.txt", // the same name in NFC and NFD
        "\xC3\x9Cn\xC3\xAF" "c\xC3\xB6" "d\xC3\xA9 Dokument.pdf", "U\xCC\x88ni\xCC\x88" "co\xCC\x88" "de\xCC\x81 Dokument.pdf",
        "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xAE\xE3\x83\x95\xE3\x82\xA1\xE3\x82\xA4\xE3\x83\xAB.txt",
        "\xF0\x9F\x93\xA6 Archive.zip", "\xD9\x85\xD8\xB3\xD8\xAA\xD9\x86\xD8\xAF.txt", " leading blank.txt",
        "trailing blank.txt ", "   ", "tab\tin name.txt", "...", "-rf", "*", "?", "back\\slash", "colon:name",
        "quote\"and'apostrophe", "semi;colon&amp", "%s%n%x", "latin1-\xE9t\xE9.txt", "bad-\xFF\xFE.bin",
        "truncated-\xE2\x82.txt", "overlong-\xC0\xAF.txt", "surrogate-\xED\xA0\x80.txt", "lone-\x80-continuation.txt",
        "Installer 1.2.3.dmg", "Statement March.pdf", "photo (1).jpg", "photo (2).jpg" };
    for (std::string_view name : names)
        maker.file(downloads, std::string(name), maker.smallSize());
    maker.file(downloads, std::string(251, 'x') + ".txt", 100);
    std::string longUnicode;
    for (int i = 0; i < 125; ++i)
        longUnicode += "\xC3\xA9";
    maker.file(downloads, longUnicode + ".txt", 100);
    for (std::string_view folderName : { "bad-\xFF-folder", "Caf\xC3\xA9 folder", "Cafe\xCC\x81 folder" }) {
        Dir folder = maker.folder(downloads, std::string(folderName));
        for (int i = 0; i < 5; ++i)
            maker.file(folder, "item " + std::to_string(i), maker.smallSize());
        Dir inner = maker.folder(folder, "inner \xFE");
        for (int i = 0; i < 3; ++i)
            maker.file(inner, "deeper " + std::to_string(i), maker.smallSize());
        maker.close(inner);
        maker.close(folder);
    }
    for (std::uint64_t i = 0, count = 100 + entries / 5'000; i < count; ++i)
        maker.file(downloads, documentFile(random), maker.smallSize(), random.chance(10) ? random.spread(1 << 20, 500 << 20) : 0);
    for (int i = 0; i < 3; ++i) {
        Dir empty = maker.folder(downloads, "empty folder " + std::to_string(i));
        maker.close(empty);
    }
    maker.close(downloads);
}

void makeLinks(Maker& maker, const Dir& home)
{
    Dir links = maker.open(home.fd, home.path, "Links");
    maker.symlink(links, "All Projects", "../Projects");
    maker.symlink(links, "Library", "../Library");
    maker.symlink(links, "self", "self");
    maker.symlink(links, "ping", "pong");
    maker.symlink(links, "pong", "ping");
    maker.symlink(links, "dangling", "../does-not-exist");
    maker.symlink(links, "absolute dangling", "/nonexistent/tarnwick-mktree");
    maker.symlink(links, "up", "..");
    maker.symlink(links, "root", "/");
    maker.symlink(links, "Downloads caf\xC3\xA9", "../Downloads/Caf\xC3\xA9.txt");
    maker.close(links);
    Dir desktop = maker.open(home.fd, home.path, "Desktop");
    maker.symlink(desktop, "Movies", "../Movies");
    maker.symlink(desktop, "Taxes", "../Documents/Tax Returns");
    maker.file(desktop, "todo.txt", 300);
    maker.file(desktop, "Screen Shot 2024-01-02 at 09.00.00.png", 4096, 2 << 20);
    maker.close(desktop);
}

} // namespace

namespace {

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
    for (int i = 0; i < flats; ++i) {
        std::uint64_t count = flatTotal / std::uint64_t(flats);
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
                "other %llu), wrote %llu bytes (apparent %llu), %.1f s with %u threads\n",
        (unsigned long long)entries, options.dest.c_str(), (unsigned long long)(tally.files + 1),
        (unsigned long long)tally.folders, (unsigned long long)tally.symlinks, (unsigned long long)tally.hardLinks,
        (unsigned long long)tally.others, (unsigned long long)tally.bytesWritten,
        (unsigned long long)tally.apparentBytes, seconds, options.threads);
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
