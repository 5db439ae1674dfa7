#include "Classification/ContentClassifier.hpp"

#include "Classification/TreeFixture.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;
using tarnwick::testing::TreeFixture;

namespace {

constexpr std::optional<ContentCategory> none = std::nullopt;

std::optional<std::string> extensionText(std::string_view name)
{
    std::optional<ExtensionKey> key = ContentClassifier::extension(name);
    if (!key)
        return std::nullopt;
    return std::string(key->view());
}

}

TEST(ContentClassifier, ExtensionOfName)
{
    struct Case {
        std::string_view name;
        std::optional<std::string> extension;
    };
    const Case cases[] = {
        { "Photo.JPG", "jpg" },
        { "archive.tar.gz", "gz" },
        { ".profile", std::nullopt },
        { "notes.", std::nullopt },
        { "Makefile", std::nullopt },
        { "a.abcdefghijklmnop", "abcdefghijklmnop" }, // 16 bytes: the longest kept
        { "a.abcdefghijklmnopq", std::nullopt },      // 17 bytes
        { "..", std::nullopt },
        { "a.b.", std::nullopt },
        { "x.ÉTÉ", "\xC3\x89t\xC3\x89" },            // only ASCII letters are folded
    };
    for (const Case& c : cases)
        EXPECT_EQ(extensionText(c.name), c.extension) << c.name;
}

TEST(ContentClassifier, ClassifyFile)
{
    struct Case {
        std::string_view name;
        std::optional<ContentCategory> category;
    };
    const Case cases[] = {
        { "Photo.JPG", ContentCategory::photos },
        { "clip.MTS", ContentCategory::video },
        { "Makefile", none },
        { "README", none },
        { ".profile", none },
        { "notes.", none },
        { "app.log.3", ContentCategory::logs },
        { "app.log.1.gz", ContentCategory::logs },
        { "install.log.2.gz", ContentCategory::logs },
        { "system.log.0", ContentCategory::logs },
        { "app.log.2.tar", ContentCategory::archives }, // not a rotation suffix
        { "catalog.1", none },                          // digits, but no ".log."
        { "archive.2024", none },
        { "APP.LOG.1", none },                          // ".log." is matched as written
        { "app.log.12345678901234567", none },          // a suffix over 16 bytes is no extension
        { "swapfile0", ContentCategory::system },
        { "swapfile", ContentCategory::system },
        { "Docker.raw", ContentCategory::virtualMachines },
        { "docker.raw", ContentCategory::photos },      // special names are exact
        { "data.img", ContentCategory::virtualMachines },
        { "disk.img", ContentCategory::archives },
        { "store.db", ContentCategory::system },
        { ".DS_Store", ContentCategory::system },
        { "sleepimage", ContentCategory::system },
        { "Foo.swiftsourceinfo", ContentCategory::developer },
        { "model.gguf", ContentCategory::ai },
        { "Mac.ips", ContentCategory::logs },
        { "movie.fcpxmld", ContentCategory::video },
        { "report.pages", ContentCategory::documents },
        { "page.download", ContentCategory::caches },
        { "x.unknownext", none },
    };
    for (const Case& c : cases)
        EXPECT_EQ(ContentClassifier::classifyFile(c.name), c.category) << c.name;
}

TEST(ContentClassifier, FolderRule)
{
    struct Case {
        std::string_view name;
        std::optional<std::string_view> parent;
        bool topLevel;
        std::optional<ContentRule> rule;
    };
    auto strong = [](ContentCategory category, std::optional<std::string_view> format = std::nullopt) {
        return ContentRule { category, true, format };
    };
    auto weak = [](ContentCategory category) { return ContentRule { category, false, std::nullopt }; };
    const Case cases[] = {
        { "target", "anything", false, strong(ContentCategory::developer, "Rust") },
        { "target", std::nullopt, false, strong(ContentCategory::developer, "Rust") },
        { "Library", "root", true, weak(ContentCategory::system) },
        { "Library", "home", false, std::nullopt },
        { "Library", std::nullopt, false, std::nullopt },
        { "Audio", "Library", false, strong(ContentCategory::music) },
        { "models", ".ollama", false, strong(ContentCategory::ai) },
        { "models", "work", false, std::nullopt },
        { "Archives", "Xcode", false, strong(ContentCategory::developer, "Xcode archives") },
        { "Archives", "Developer", false, std::nullopt },
        { "logs", "var", false, strong(ContentCategory::logs) },
        { "logs", "app", false, strong(ContentCategory::logs) },
        { "folders", "var", false, strong(ContentCategory::caches, "Per-user temporary files and caches") },
        { "vm", "var", false, strong(ContentCategory::system, "Swap and sleep image") },
        { "vm", "work", false, std::nullopt },
        { "Movies", "home", false, weak(ContentCategory::video) },
        { "movies", "home", false, std::nullopt },
        { "My Backup", "home", false, strong(ContentCategory::archives, "Backup") },
        { "OLD-BACKUPS", "home", false, strong(ContentCategory::archives, "Backup") },
        { "Final Cut Pro Backups", "home", false, strong(ContentCategory::video, "Final Cut Pro media") },
        { "Photos.migratedphotolibrary", "Pictures", false, std::nullopt },
        { "Photos Library.photoslibrary", "Pictures", false, strong(ContentCategory::photos, "Photos library") },
        { "Tool.APP", "Applications", false, strong(ContentCategory::apps, "Application") },
        { "Setup.pkg", "Downloads", false, strong(ContentCategory::archives, "Installer package") },
        { "Backups.backupdb", "Volume", false, strong(ContentCategory::archives, "Time Machine backup") },
        { ".claude", "home", false, strong(ContentCategory::ai, "Claude Code data") },
        { "claude", "share", false, strong(ContentCategory::ai, "Claude Code data") },
        { "claude", "elsewhere", false, std::nullopt },
        { "Claude", "Application Support", false, strong(ContentCategory::ai, "Claude Desktop data") },
        { "Codex", "Documents", false, strong(ContentCategory::ai, "Codex data") },
        { "Codex", "Application Support", false, strong(ContentCategory::ai, "Codex data") },
        { "antigravity", ".gemini", false, strong(ContentCategory::ai, "Antigravity data") },
        { "saoudrizwan.claude-dev", "globalStorage", false, strong(ContentCategory::ai, "Cline data") },
        { "opencode", ".config", false, strong(ContentCategory::ai, "opencode data") },
        { "Cache", "app", false, strong(ContentCategory::caches) },
    };
    for (const Case& c : cases)
        EXPECT_EQ(ContentClassifier::folderRule(c.name, c.parent, c.topLevel), c.rule) << c.name << " in " << c.parent.value_or("(root)");
}

TEST(ContentClassifier, FormatName)
{
    using enum ContentClassifier::ItemKind;
    struct Case {
        std::string_view name;
        ContentClassifier::ItemKind kind;
        std::optional<std::string_view> format;
    };
    const Case cases[] = {
        { "Wedding.fcpbundle", folder, "Final Cut Pro library" },
        { ".venv", folder, "Python environment" },
        { "Movies", folder, std::nullopt },
        { "Old Backup", folder, "Backup" },
        { "Poster.PSD", file, "Photoshop document" },
        { "llama.gguf", file, "GGUF model" },  // a named format outranks the plain list
        { "Mac.crash", file, "Crash report" },
        { "Docker.qcow2", file, "Docker disk" },
        { "disk.qcow2", file, "QEMU virtual disk" },
        { "store.db", file, std::nullopt },
        { "system.log.0", file, std::nullopt },
        { "swapfile1", file, std::nullopt },
        { "clip.mp4", file, std::nullopt },
        { "Wedding.fcpbundle", file, std::nullopt }, // a file is judged by the extension table
    };
    for (const Case& c : cases)
        EXPECT_EQ(ContentClassifier::formatName(c.name, c.kind, "home", false), c.format) << c.name;
}

TEST(ContentClassifier, TreeFilesAndContexts)
{
    TreeFixture fixture("home");
    const std::pair<std::string, ContentCategory> files[] = {
        { "Makefile", ContentCategory::other },
        { "song.mp3", ContentCategory::music },
        { "swapfile0", ContentCategory::system },
        { "Documents/song.mp3", ContentCategory::music },          // weak: the file's own name wins
        { "Documents/notes", ContentCategory::documents },         // weak: the folder names the rest
        { "Projects/model.obj", ContentCategory::developer },      // ambiguous under weak developer
        { "Projects/clip.mts", ContentCategory::developer },
        { "Projects/kit.exs", ContentCategory::developer },
        { "Projects/photo.png", ContentCategory::photos },
        { "Pictures/model.obj", ContentCategory::photos },
        { "Movies/clip.mts", ContentCategory::video },
        { ".git/objects/photo.jpg", ContentCategory::developer },  // strong claims everything
        { "Caches/anything.mp4", ContentCategory::caches },
        { "Caches/swapfile0", ContentCategory::caches },
        { "Library/prefs.plist", ContentCategory::system },        // top-level weak system
        { "Library/song.mp3", ContentCategory::music },
        { "work/Library/prefs.plist", ContentCategory::other },    // not top level: no rule
        { "work/target/debug/app.png", ContentCategory::developer },
        { "Documents/Projects/model.obj", ContentCategory::developer }, // weak inside weak: the inner rule
        { "Projects/Documents/model.obj", ContentCategory::photos },
        { "Documents/.git/readme.txt", ContentCategory::developer },    // strong inside weak
        { ".git/Documents/readme.txt", ContentCategory::developer },    // weak inside strong changes nothing
        { "Caches/Documents/node_modules/a.js", ContentCategory::developer }, // strong in weak in strong
        { "Caches/Documents/a.js", ContentCategory::caches },
        { "Documents/Caches/Pictures/a.png", ContentCategory::caches },
        { "Tool.app/Contents/MacOS/tool", ContentCategory::apps },
        // An agent's folder keeps its media, but the tools and caches inside stay what they are.
        { ".claude/history.jsonl", ContentCategory::ai },
        { ".claude/node_modules/pkg/image.png", ContentCategory::developer },
        { ".claude/Cache/blob", ContentCategory::caches },
        { ".claude/logs/run.txt", ContentCategory::logs },
        { ".claude/old backup/a.zip", ContentCategory::archives },
        { ".claude/models/weights.bin", ContentCategory::ai },
        { ".claude/Screen Recordings/demo.mov", ContentCategory::ai },
        { ".claude/Movies/demo.mov", ContentCategory::ai },
        { ".claude/Documents/plan.pdf", ContentCategory::ai },
        { ".claude/.docker/disk.raw", ContentCategory::ai },
        { ".claude/Screen Recordings/node_modules/a.js", ContentCategory::developer },
        { ".ollama/models/blob", ContentCategory::ai },
        { "Library/Application Support/Claude/vm_bundles/disk.img", ContentCategory::ai },
        // Outside an agent's folder the same strong rules simply win.
        { "Screen Recordings/node_modules/a.js", ContentCategory::developer },
        { "node_modules/Screen Recordings/demo.mov", ContentCategory::video },
    };
    for (const auto& [path, category] : files)
        fixture.add(path, 1);
    auto tree = fixture.finish();
    auto result = ContentClassifier::classifyTree(*tree);
    ASSERT_EQ(result.categories.size(), static_cast<std::size_t>(tree->count()));
    ASSERT_EQ(result.fallbacks.size(), static_cast<std::size_t>(tree->count()));
    for (const auto& [path, category] : files)
        EXPECT_EQ(result.categories[fixture.id(path).index()], ContentCategories::raw(category)) << path;

    const std::pair<std::string, ContentCategory> fallbacks[] = {
        { "", ContentCategory::other },
        { "Documents", ContentCategory::documents },
        { "Documents/.git", ContentCategory::developer },
        { ".git/Documents", ContentCategory::developer },
        { "work", ContentCategory::other },
        { "work/Library", ContentCategory::other },
        { "Library", ContentCategory::system },
        { "Caches/Documents/node_modules", ContentCategory::developer },
        { "Tool.app/Contents", ContentCategory::apps },
        { "Makefile", ContentCategory::other },
    };
    for (const auto& [path, category] : fallbacks)
        EXPECT_EQ(result.fallbacks[fixture.id(path).index()], ContentCategories::raw(category)) << path;
    EXPECT_EQ(result.categories[fixture.id("Documents").index()], ContentCategories::notSet);
    EXPECT_EQ(result.categories[0], ContentCategories::notSet);
}

TEST(ContentClassifier, RootRuleAppliesToWholeScan)
{
    // Scanning a caches folder itself: the root's own name sets the context.
    TreeFixture caches("Caches");
    NodeID movie = caches.add("movie.mp4", 1);
    auto cachesTree = caches.finish();
    EXPECT_EQ(ContentClassifier::classifyTree(*cachesTree).categories[movie.index()], ContentCategories::raw(ContentCategory::caches));

    // The root is never top level, so a scan of a folder named Library gets no rule from it.
    TreeFixture library("Library");
    NodeID plist = library.add("prefs.plist", 1);
    NodeID nested = library.add("Library/prefs.plist", 1);
    auto libraryTree = library.finish();
    auto result = ContentClassifier::classifyTree(*libraryTree);
    EXPECT_EQ(result.categories[plist.index()], ContentCategories::raw(ContentCategory::other));
    EXPECT_EQ(result.categories[nested.index()], ContentCategories::raw(ContentCategory::system));
}

TEST(ContentClassifier, LeavesOfEveryKindAreClassifiedByName)
{
    TreeFixture fixture("home");
    NodeID link = fixture.add({ "Documents/shortcut.mp3", 0, NodeKind::symlink });
    NodeID mount = fixture.add({ "Volumes.dmg", 0, NodeKind::mountPoint });
    NodeID other = fixture.add({ ".git/fifo", 0, NodeKind::other });
    auto tree = fixture.finish();
    auto result = ContentClassifier::classifyTree(*tree);
    EXPECT_EQ(result.categories[link.index()], ContentCategories::raw(ContentCategory::music));
    EXPECT_EQ(result.categories[mount.index()], ContentCategories::raw(ContentCategory::archives));
    EXPECT_EQ(result.categories[other.index()], ContentCategories::raw(ContentCategory::developer));
}
