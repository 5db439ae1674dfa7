#include "e2e/CommandLineHarness.hpp"
#include "Support/DiskUsage.hpp"
#include "Support/GeneratedTree.hpp"

using namespace tarnwick::fixtures;

namespace {

// A whole tree through the command line, as a user runs it, checked against du.
class ScanAtScaleE2E : public CommandLineE2E {
protected:
    void scanAndCompare(const std::string& launcher)
    {
        const GeneratedTree& tree = GeneratedTree::shared();
        const std::string& root = tree.root;
        ASSERT_GE(tree.entries, 100'000);
        ASSERT_EQ(tarnwick("scan '" + root + "'", launcher).status, 0);
        ASSERT_EQ(tarnwick("wait --timeout 120").status, 0);
        nlohmann::json summary = json("summary '" + root + "'");
        EXPECT_EQ(summary["unreadable_places"], 0);
        EXPECT_EQ(summary["size_bytes"], duTotal(root));
        EXPECT_EQ(summary["logical_bytes"], duApparentTotal(root) - folderSizes(root));
        EXPECT_EQ(summary["incomplete"], false);
        for (const char* folder : { "wide", "deep", "ten-thousand-empty", "flat/f7", "links/same" }) {
            nlohmann::json part = json("summary '" + root + "/" + folder + "'");
            EXPECT_EQ(part["size_bytes"], duTotal(root + "/" + folder)) << folder;
        }
    }
};

}

TEST_F(ScanAtScaleE2E, AnAppWithATinyOpenFileLimitReadsEveryFolder)
{
    scanAndCompare("prlimit --nofile=128:128 --");
}

TEST_F(ScanAtScaleE2E, AnAppAtTheDefaultLimitReadsEveryFolder)
{
    scanAndCompare("");
}
