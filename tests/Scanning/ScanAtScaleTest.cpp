#include "Scanning/FileScanner.hpp"
#include "Support/DiskUsage.hpp"
#include "Support/GeneratedTree.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <thread>
#include <unistd.h>
#include <cstdio>
#include <sys/resource.h>

using namespace tarnwick;
using tarnwick::fixtures::duFolders;
using tarnwick::fixtures::GeneratedTree;

namespace {

class ScanAtScale : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_tree = &GeneratedTree::shared();
        s_du = new std::map<std::string, std::int64_t>(duFolders(s_tree->root));
    }
    static void TearDownTestSuite() { delete s_du; }

    static std::string root() { return s_tree->root; }

    // Scans and compares with du; returns the number of differences, each told on stderr
    // (a forked child has no other way to say what went wrong).
    static int differences(FileScanner::Workers workers)
    {
        FileScanner::Options options;
        options.root = root();
        options.progress = std::make_shared<ScanProgress>();
        options.workers = workers;
        FileScanner scanner(options);
        ScanOutcome outcome = scanner.scan();
        const ScanTree& tree = *outcome.tree;
        int wrong = 0;
        auto report = [&](const std::string& what) {
            if (++wrong <= 10)
                std::fprintf(stderr, "%s\n", what.c_str());
        };
        for (const ScanIssue& issue : tree.issues())
            report("issue " + std::to_string(issue.code) + " at " + tree.path(issue.node));
        if (tree.count() != s_tree->entries + 1)
            report("entries " + std::to_string(tree.count()) + ", made " + std::to_string(s_tree->entries + 1));
        for (std::int32_t i = 0; i < tree.count(); ++i) {
            NodeID node { i };
            if (!isContainer(tree.kind(node)))
                continue;
            std::string relative = tree.relativePath(node);
            if (s_tree->linkCrosses(relative))
                continue;
            auto du = s_du->find(tree.path(node));
            if (du == s_du->end())
                report("du has no " + tree.path(node));
            else if (du->second != tree.allocatedSize(node))
                report(tree.path(node) + ": " + std::to_string(tree.allocatedSize(node)) + ", du " + std::to_string(du->second));
            if (tree.isIncomplete(node))
                report(tree.path(node) + " is a lower bound");
        }
        if (tree.allocatedSize(NodeID::root()) != s_du->at(root()))
            report("root " + std::to_string(tree.allocatedSize(NodeID::root())) + ", du " + std::to_string(s_du->at(root())));
        return wrong;
    }

    static int differencesWithLimit(rlim_t openFiles, FileScanner::Workers workers)
    {
        struct rlimit limit;
        limit.rlim_cur = limit.rlim_max = openFiles;
        setrlimit(RLIMIT_NOFILE, &limit);
        return differences(workers);
    }

    inline static const GeneratedTree* s_tree = nullptr;
    inline static std::map<std::string, std::int64_t>* s_du = nullptr;
};

}

TEST_F(ScanAtScale, TheTreeHasTheShapesThatBreakScanners)
{
    EXPECT_GE(s_tree->entries, 100'000);
    EXPECT_GE(s_tree->folders, 20'000);
}

TEST_F(ScanAtScale, EveryFolderEqualsDuAtTheDefaultLimit)
{
    for (auto workers : { FileScanner::Workers::fixed(1), FileScanner::Workers::fixed(16), FileScanner::Workers::adaptive() })
        EXPECT_EQ(differences(workers), 0);
}

TEST_F(ScanAtScale, ATinyOpenFileLimitLosesNothing)
{
    // The limit is lowered in a child, for good: the hard limit cannot be raised again.
    GTEST_FLAG_SET(death_test_style, "fast");
    for (auto workers : { FileScanner::Workers::fixed(2), FileScanner::Workers::fixed(16), FileScanner::Workers::adaptive() }) {
        EXPECT_EXIT(std::_Exit(differencesWithLimit(128, workers) == 0 ? 0 : 1), ::testing::ExitedWithCode(0), "");
    }
}

TEST_F(ScanAtScale, TheSameNameCarriesAHardLinkedFileInEveryScan)
{
    auto carriers = [](FileScanner::Workers workers) {
        FileScanner::Options options;
        options.root = root();
        options.workers = workers;
        FileScanner scanner(options);
        auto tree = scanner.scan().tree;
        std::map<std::string, std::string> found;
        for (const auto& names : s_tree->hardLinks) {
            for (const std::string& name : names) {
                auto node = tree->node(name);
                if (!node)
                    continue;
                auto carrier = tree->hardLinkCarrier(*node);
                found[name] = carrier ? tree->relativePath(*carrier) : std::string("itself");
            }
        }
        return found;
    };
    auto first = carriers(FileScanner::Workers::fixed(1));
    EXPECT_EQ(first.at("links/q2/shared"), "links/q0/shared");
    EXPECT_EQ(first.at("links/q0/shared"), "itself");
    EXPECT_EQ(first.at("links/same/two"), "links/same/one");
    EXPECT_EQ(first.at("links/across/same-as-flat"), "flat/f0/file-0.dat");
    EXPECT_EQ(carriers(FileScanner::Workers::fixed(16)), first);
}

TEST(WholeSystemScan, NoFolderIsLostToADescriptorShortage)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root reads the whole system";
    // As on a desktop, whose soft limit is 1024; bounded in time, stopped if it runs long.
    GTEST_FLAG_SET(death_test_style, "fast");
    EXPECT_EXIT(
        {
            struct rlimit limit;
            getrlimit(RLIMIT_NOFILE, &limit);
            limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 1024);
            setrlimit(RLIMIT_NOFILE, &limit);
            FileScanner::Options options;
            options.root = "/";
            FileScanner scanner(options);
            std::thread watchdog([&scanner] {
                std::this_thread::sleep_for(std::chrono::seconds(50));
                scanner.cancel();
            });
            watchdog.detach();
            ScanOutcome outcome = scanner.scan();
            int shortages = 0;
            for (const ScanIssue& issue : outcome.tree->issues()) {
                if (issue.code == EMFILE || issue.code == ENFILE) {
                    if (++shortages <= 5)
                        std::fprintf(stderr, "%s: %d\n", outcome.tree->path(issue.node).c_str(), issue.code);
                }
            }
            std::fprintf(stderr, "%d items, %zu issues\n", outcome.tree->count(), outcome.tree->issues().size());
            std::_Exit(shortages == 0 && outcome.tree->count() > 1000 ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}
