#include "Scanning/FileScanner.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <map>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tarnwick;
using tarnwick::fixtures::TempFolder;

namespace {

ScanOutcome scanFolder(const std::string& root, FileScanner::Workers workers = FileScanner::Workers::fixed(2), FileScanner::Hooks hooks = {})
{
    FileScanner::Options options;
    options.root = root;
    options.progress = std::make_shared<ScanProgress>();
    options.workers = workers;
    options.hooks = std::move(hooks);
    return FileScanner(options).scan();
}

struct Totals {
    std::int64_t allocated = 0;
    std::int64_t logical = 0;
};

// What lstat says of every entry below root, summed for every folder: a folder's own blocks
// count, a file with several names counts once, at its first path in byte order.
std::map<std::string, Totals> lstatTotals(const std::string& root)
{
    struct Entry {
        std::string path;
        struct stat info;
    };
    std::vector<Entry> entries;
    std::map<std::pair<dev_t, ino_t>, std::string> carriers;
    for (auto it = std::filesystem::recursive_directory_iterator(root); it != std::filesystem::recursive_directory_iterator(); ++it) {
        Entry entry { it->path().string(), {} };
        if (lstat(entry.path.c_str(), &entry.info) != 0)
            continue;
        if (!S_ISDIR(entry.info.st_mode) && entry.info.st_nlink > 1) {
            auto [at, added] = carriers.try_emplace({ entry.info.st_dev, entry.info.st_ino }, entry.path);
            if (!added && entry.path < at->second)
                at->second = entry.path;
        }
        entries.push_back(std::move(entry));
    }
    std::map<std::string, Totals> totals;
    struct stat rootInfo;
    lstat(root.c_str(), &rootInfo);
    totals[root].allocated = static_cast<std::int64_t>(rootInfo.st_blocks) * 512;
    for (const Entry& entry : entries) {
        bool isFolder = S_ISDIR(entry.info.st_mode);
        if (isFolder)
            totals[entry.path].allocated += static_cast<std::int64_t>(entry.info.st_blocks) * 512;
        auto carrier = carriers.find({ entry.info.st_dev, entry.info.st_ino });
        if (carrier != carriers.end() && carrier->second != entry.path)
            continue;
        std::int64_t allocated = static_cast<std::int64_t>(entry.info.st_blocks) * 512;
        std::int64_t logical = isFolder ? 0 : entry.info.st_size;
        for (std::filesystem::path folder = std::filesystem::path(entry.path).parent_path();; folder = folder.parent_path()) {
            totals[folder.string()].allocated += allocated;
            totals[folder.string()].logical += logical;
            if (folder.string() == root)
                break;
        }
    }
    return totals;
}

void makeMixedTree(const TempFolder& folder)
{
    folder.makeFile("docs/readme.txt", 1234);
    folder.makeFile("docs/big.bin", 300000);
    folder.makeSparseFile("docs/sparse.img", 50'000'000);
    folder.makeFolder("empty");
    folder.makeFile("deep/a/b/c/d/e/leaf", 10);
    folder.makeFile("with blank/and ünïcode ✓", 77);
    folder.makeLink("link-to-docs", "docs");
    folder.makeLink("dangling", "nowhere");
    for (int i = 0; i < 300; ++i)
        folder.makeFile("flat/file-" + std::to_string(i), static_cast<std::size_t>(i * 13));
    std::filesystem::create_hard_link(folder / "docs/big.bin", folder / "flat/hardlink.bin");
    mkfifo((folder / "fifo").c_str(), 0644);
}

}

TEST(FileScanner, EveryFolderTotalMatchesLstat)
{
    TempFolder folder;
    makeMixedTree(folder);
    for (auto workers : { FileScanner::Workers::fixed(1), FileScanner::Workers::fixed(3), FileScanner::Workers::adaptive() }) {
        ScanOutcome outcome = scanFolder(folder.path(), workers);
        ASSERT_EQ(outcome.status, ScanOutcome::Status::completed());
        const ScanTree& tree = *outcome.tree;
        auto expected = lstatTotals(folder.path());
        int folders = 0;
        for (std::int32_t i = 0; i < tree.count(); ++i) {
            NodeID node { i };
            if (!isContainer(tree.kind(node)))
                continue;
            ++folders;
            const Totals& want = expected.at(tree.path(node));
            EXPECT_EQ(tree.allocatedSize(node), want.allocated) << tree.path(node);
            EXPECT_EQ(tree.logicalSize(node), want.logical) << tree.path(node);
            EXPECT_FALSE(tree.isIncomplete(node));
        }
        EXPECT_EQ(folders, static_cast<int>(expected.size()));
        EXPECT_EQ(outcome.itemCount, tree.count());
        EXPECT_TRUE(tree.issues().empty());
    }
}

TEST(FileScanner, KindsOfEntries)
{
    TempFolder folder;
    makeMixedTree(folder);
    auto tree = scanFolder(folder.path()).tree;
    struct Case {
        const char* path;
        NodeKind kind;
    };
    const Case cases[] = {
        { "docs", NodeKind::directory },
        { "docs/readme.txt", NodeKind::file },
        { "link-to-docs", NodeKind::symlink },
        { "dangling", NodeKind::symlink },
        { "fifo", NodeKind::other },
        { "with blank/and ünïcode ✓", NodeKind::file },
    };
    for (const Case& c : cases) {
        auto node = tree->node(c.path);
        ASSERT_TRUE(node) << c.path;
        EXPECT_EQ(tree->kind(*node), c.kind) << c.path;
    }
    // A link to a large folder counts only the link itself.
    auto link = *tree->node("link-to-docs");
    EXPECT_EQ(tree->childCount(link), 0);
    EXPECT_LT(tree->logicalSize(link), 100);
    auto sparse = *tree->node("docs/sparse.img");
    EXPECT_EQ(tree->logicalSize(sparse), 50'000'000);
    EXPECT_LT(tree->allocatedSize(sparse), 1'000'000);
    EXPECT_TRUE(tree->lastChangeInside(*tree->node("docs")));
}

TEST(FileScanner, InvalidUTF8NamesAreRepaired)
{
    TempFolder folder;
    folder.makeFile("bad\xff" "name", 5);
    folder.makeFile("ok", 5);
    auto tree = scanFolder(folder.path()).tree;
    EXPECT_EQ(tree->count(), 3);
    EXPECT_TRUE(tree->node("bad\xEF\xBF\xBDname"));
    EXPECT_EQ(tree->allocatedSize(NodeID::root()), lstatTotals(folder.path()).at(folder.path()).allocated);
    EXPECT_EQ(tree->allocatedSize(*tree->node("bad\xEF\xBF\xBDname")), tree->allocatedSize(*tree->node("ok")));
}

TEST(FileScanner, MissingRootIsUnreadable)
{
    TempFolder folder;
    ScanOutcome outcome = scanFolder(folder / "does-not-exist");
    EXPECT_EQ(outcome.status.kind, ScanOutcome::Status::Kind::rootUnreadable);
    EXPECT_EQ(outcome.status.issueKind, IssueKind::notFound);
}

TEST(FileScanner, FolderRemovedWhileQueuedIsDisappeared)
{
    TempFolder folder;
    folder.makeFile("first/x", 10);
    folder.makeFile("second/y", 10);
    std::string removed;
    FileScanner::Hooks hooks;
    hooks.directoryEntered = [&](const std::string& path) {
        if (path == folder.path() || !removed.empty())
            return;
        // The other folder is still queued: remove it before a worker gets there.
        removed = path == folder / "first" ? folder / "second" : folder / "first";
        std::filesystem::remove_all(removed);
    };
    ScanOutcome outcome = scanFolder(folder.path(), FileScanner::Workers::fixed(1), hooks);
    const ScanTree& tree = *outcome.tree;
    auto node = tree.node(removed);
    ASSERT_TRUE(node);
    ASSERT_NE(tree.issue(*node), nullptr);
    EXPECT_EQ(tree.issue(*node)->kind, IssueKind::notFound);
    EXPECT_EQ(tree.issue(*node)->code, ENOENT);
    EXPECT_EQ(tree.childCount(*node), 0);
}

TEST(FileScanner, ChainTenThousandDeep)
{
    TempFolder folder;
    constexpr int depth = 10000;
    int fd = open(folder.path().c_str(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < depth; ++i) {
        ASSERT_EQ(mkdirat(fd, "d", 0755), 0);
        int next = openat(fd, "d", O_RDONLY | O_DIRECTORY);
        close(fd);
        fd = next;
    }
    int file = openat(fd, "leaf", O_WRONLY | O_CREAT, 0644);
    ASSERT_EQ(write(file, "abc", 3), 3);
    close(file);
    close(fd);
    ScanOutcome outcome = scanFolder(folder.path(), FileScanner::Workers::fixed(2));
    const ScanTree& tree = *outcome.tree;
    ASSERT_EQ(tree.count(), depth + 2);
    NodeID leaf { tree.count() - 1 };
    EXPECT_EQ(tree.name(leaf), "leaf");
    EXPECT_EQ(tree.depth(leaf), depth + 1);
    EXPECT_EQ(tree.logicalSize(NodeID::root()), 3);
    EXPECT_TRUE(tree.issues().empty());
}

TEST(FileScanner, StopWithThousandsQueuedEndsWithUnreadFolders)
{
    TempFolder folder;
    for (int i = 0; i < 3000; ++i)
        folder.makeFile("many/f" + std::to_string(i) + "/x", 1);
    std::shared_ptr<FileScanner> scanner;
    FileScanner::Options options;
    options.root = folder.path();
    options.progress = std::make_shared<ScanProgress>();
    options.workers = FileScanner::Workers::fixed(1);
    int entered = 0;
    options.hooks.directoryEntered = [&](const std::string&) {
        if (++entered == 10)
            scanner->cancel();
    };
    scanner = std::make_shared<FileScanner>(options);
    ScanOutcome outcome = scanner->scan();
    EXPECT_EQ(outcome.status, ScanOutcome::Status::stopped());
    EXPECT_TRUE(scanner->stopState().cancelled);
    const ScanTree& tree = *outcome.tree;
    int unread = 0;
    for (NodeID child : tree.children(*tree.node("many")))
        unread += tree.flags(child).contains(NodeFlag::contentsUnread) ? 1 : 0;
    EXPECT_GT(unread, 2900);
    EXPECT_TRUE(tree.isIncomplete(NodeID::root()));
    EXPECT_LT(entered, 20);
}

TEST(FileScanner, UnreadableFolderHasIssueAndNoChildren)
{
    TempFolder folder;
    folder.makeFile("open/a", 100);
    folder.makeFile("locked/secret", 100);
    chmod((folder / "locked").c_str(), 0);
    // As root everything is readable, so read as an unprivileged user in a child process.
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0))
            _exit(10);
        ScanOutcome outcome = scanFolder(folder.path());
        const ScanTree& tree = *outcome.tree;
        auto locked = tree.node("locked");
        if (!locked || tree.childCount(*locked) != 0)
            _exit(11);
        const ScanIssue* issue = tree.issue(*locked);
        if (issue == nullptr || issue->kind != IssueKind::permissionDenied || issue->code != EACCES)
            _exit(12);
        if (!tree.isIncomplete(NodeID::root()) || !tree.flags(*locked).contains(NodeFlag::contentsUnread))
            _exit(13);
        if (tree.childCount(*tree.node("open")) != 1)
            _exit(14);
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(FileScanner, MountPointIsALeaf)
{
    TempFolder folder;
    folder.makeFile("outer/file", 10);
    folder.makeFolder("outer/mnt");
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
            _exit(77);
        if (mount("tmpfs", (folder / "outer/mnt").c_str(), "tmpfs", 0, "size=1m") != 0)
            _exit(77);
        fixtures::runShell("echo hello > '" + (folder / "outer/mnt/inside") + "'");
        ScanOutcome outcome = scanFolder(folder.path());
        const ScanTree& tree = *outcome.tree;
        auto mnt = tree.node("outer/mnt");
        int code = (mnt && tree.kind(*mnt) == NodeKind::mountPoint && tree.childCount(*mnt) == 0 && tree.allocatedSize(*mnt) == 0) ? 0 : 1;
        umount((folder / "outer/mnt").c_str());
        _exit(code);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == 77)
        GTEST_SKIP() << "no private mount namespace here (needs root or user namespaces)";
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(FileScanner, PackagesAreListedAndCounted)
{
    TempFolder folder;
    folder.makeFile("Tool.app/Contents/binary", 5000);
    folder.makeFile("Notes.APP/inside", 10);
    folder.makeFile("plain.d/x", 10);
    folder.makeFile("archive.unknownext/x", 10);
    auto tree = scanFolder(folder.path()).tree;
    const std::pair<const char*, NodeKind> cases[] = {
        { "Tool.app", NodeKind::package }, { "Notes.APP", NodeKind::package },
        { "plain.d", NodeKind::directory }, { "archive.unknownext", NodeKind::directory },
    };
    for (auto [path, kind] : cases)
        EXPECT_EQ(tree->kind(*tree->node(path)), kind) << path;
    auto app = *tree->node("Tool.app");
    // A package is one item whose size is everything in it, its folders' blocks included.
    EXPECT_EQ(tree->allocatedSize(app), lstatTotals(folder / "Tool.app").at(folder / "Tool.app").allocated);
}

TEST(FileScanner, LibraryIsHiddenOnlyInHomeFolders)
{
    TempFolder folder;
    folder.makeFile("home/alice/Library/prefs", 10);
    folder.makeFile("home/alice/Documents/Library/x", 10);
    auto tree = scanFolder(folder.path()).tree;
    // A temporary folder is no home folder, so no Library below it is hidden.
    EXPECT_EQ(tree->isHiddenFromFinder(*tree->node("home/alice/Library")), false);
    EXPECT_EQ(tree->isHiddenFromFinder(*tree->node("home/alice/Documents/Library")), false);
}

TEST(FileScanner, LibraryInARealHomeFolderIsHidden)
{
    // Folders directly in /home are home folders; make one for the test when allowed.
    std::string home = "/home/tarnwick-test-" + std::to_string(getpid());
    if (mkdir("/home", 0755) != 0 && errno != EEXIST)
        GTEST_SKIP() << "cannot create /home here";
    if (mkdir(home.c_str(), 0755) != 0)
        GTEST_SKIP() << "cannot create a folder in /home here";
    mkdir((home + "/Library").c_str(), 0755);
    mkdir((home + "/Other").c_str(), 0755);
    mkdir((home + "/Other/Library").c_str(), 0755);
    auto tree = scanFolder(home).tree;
    EXPECT_EQ(tree->isHiddenFromFinder(*tree->node("Library")), true);
    EXPECT_EQ(tree->isHiddenFromFinder(*tree->node("Other/Library")), false);
    fixtures::runShell("rm -rf '" + home + "'");
}
