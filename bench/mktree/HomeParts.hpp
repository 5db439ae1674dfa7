#pragma once

// The parts of the home folder mktree makes, each from its own job's random stream.

#include "TreeMaker.hpp"

#include <array>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>

namespace mktree {

constexpr std::array<std::string_view, 96> words = { "alpha", "amber", "anchor", "apex", "arrow", "aspen",
    "atlas", "axle", "badge", "basil", "beacon", "birch", "blaze", "bloom", "bolt", "brook", "cable", "cactus",
    "canyon", "cedar", "cinder", "cobalt", "comet", "coral", "crane", "crest", "delta", "drift", "ember", "fable",
    "falcon", "fern", "flint", "forge", "frost", "garnet", "glade", "granite", "harbor", "hazel", "helix", "heron",
    "indigo", "iris", "ivory", "jade", "juniper", "kestrel", "lagoon", "lantern", "lark", "ledger", "lumen",
    "maple", "marble", "meadow", "mesa", "mint", "nectar", "nimbus", "nova", "oak", "onyx", "orbit", "otter",
    "pebble", "pine", "pixel", "plume", "prism", "quartz", "quill", "raven", "reef", "ridge", "river", "robin",
    "sable", "sage", "scarlet", "shale", "sierra", "slate", "sparrow", "spruce", "stone", "summit", "swift",
    "thistle", "tide", "timber", "topaz", "tundra", "umber", "vale", "willow" };

inline std::string hex(Random& random, std::size_t length, bool upper = false)
{
    const char* digits = upper ? "0123456789ABCDEF" : "0123456789abcdef";
    std::string text(length, '0');
    for (char& c : text)
        c = digits[random.below(16)];
    return text;
}

inline std::string uuid(Random& random)
{
    return hex(random, 8, true) + '-' + hex(random, 4, true) + '-' + hex(random, 4, true) + '-'
        + hex(random, 4, true) + '-' + hex(random, 12, true);
}

inline std::string number(std::uint64_t value, int width)
{
    std::string digits = std::to_string(value);
    if (int(digits.size()) < width)
        digits.insert(0, std::size_t(width) - digits.size(), '0');
    return digits;
}

inline std::string wordName(Random& random)
{
    std::string name(random.pick(words));
    if (random.chance(40))
        name += std::string(random.chance(50) ? "-" : "_") + std::string(random.pick(words));
    return name;
}

inline std::string codeFile(Random& random)
{
    static constexpr std::array<std::string_view, 10> extensions = { ".js", ".ts", ".tsx", ".json", ".css", ".md",
        ".cpp", ".hpp", ".py", ".go" };
    return wordName(random) + std::string(random.pick(extensions));
}

inline std::string documentFolder(Random& random)
{
    static constexpr std::array<std::string_view, 12> names = { "Archive", "2019", "2021", "Old Stuff", "Scans",
        "Drafts", "Final", "Receipts", "Kunden \xC3\x9C" "bersicht", "Re\xCC\x81sume\xCC\x81s", "Shared with me",
        "Misc" };
    std::string name(random.pick(names));
    if (random.chance(50))
        name += " " + std::to_string(random.between(1, 40));
    return name;
}

inline std::string documentFile(Random& random)
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

inline std::string appFolder(Random& random)
{
    static constexpr std::array<std::string_view, 10> names = { "Profiles", "Default", "IndexedDB", "Local Storage",
        "leveldb", "Extensions", "Service Worker", "databases", "Plugins", "blob_storage" };
    return random.chance(60) ? std::string(random.pick(names)) : wordName(random);
}

inline std::string appFile(Random& random)
{
    static constexpr std::array<std::string_view, 8> extensions = { ".ldb", ".log", ".json", ".sqlite", ".plist",
        ".db-wal", ".bin", "" };
    return random.chance(30) ? number(random.below(1'000'000), 6) + std::string(random.pick(extensions))
                             : wordName(random) + std::string(random.pick(extensions));
}

// ---- The parts of the home folder ------------------------------------------------------

inline void makePackage(Maker& maker, const Dir& modules, std::string name, bool mayNest, std::vector<std::string>& bins)
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

inline void makeNodeModules(Maker& maker, const Dir& project, std::uint64_t budget)
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

inline void makeGit(Maker& maker, const Dir& project, std::uint64_t budget)
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

inline void makeProject(Maker& maker, const Dir& projects, int index, std::uint64_t budget)
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
inline void makeFlat(Maker& maker, const Dir& home, int index, std::uint64_t count)
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

inline void makeCache(Maker& maker, const Dir& home, int index, std::uint64_t budget)
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

inline void makeDocuments(Maker& maker, const Dir& home, int index, std::uint64_t budget)
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

inline void makeAppSupport(Maker& maker, const Dir& home, int index, std::uint64_t budget)
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
inline void makeChain(Maker& maker, const Dir& home, int index)
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
inline void makeMedia(Maker& maker, const Dir& home, std::uint64_t entries)
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
inline void makeOddities(Maker& maker, const Dir& home, std::uint64_t entries)
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

inline void makeLinks(Maker& maker, const Dir& home)
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

} // namespace mktree
