#include "History/SnapshotCheck.hpp"

#include "History/SnapshotFixture.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;
using namespace tarnwick::testing;
using Difference = SnapshotCheck::Difference;

namespace {

constexpr std::int64_t MB = 1'000'000;

std::shared_ptr<const ScanTree> treeOf(const std::vector<std::pair<std::string, std::int64_t>>& files)
{
    TreeFixture tree;
    for (const auto& [path, bytes] : files)
        tree.add(path, bytes);
    return tree.finish();
}

const std::vector<std::pair<std::string, std::int64_t>> before {
    { "Keep/a.bin", 20 * MB }, { "Gone/Deep/b.bin", 30 * MB }, { "Shrunk/c.bin", 15 * MB },
};
const std::vector<std::pair<std::string, std::int64_t>> after {
    { "Keep/a.bin", 25 * MB }, { "New/Deeper/d.bin", 12 * MB }, { "Shrunk/c.bin", 5 * MB },
};

}

TEST(SnapshotCheck, AgainstAnotherSnapshotOrATree)
{
    Snapshot snapshot = reduceWithoutColors(treeOf(before));
    const std::vector<Difference> expected {
        Difference::disappeared("/scan/Gone"), // Gone/Deep goes with it
        Difference::disappeared("/scan/Shrunk"), // now below 10 MB
        Difference::appeared("/scan/New"),
    };
    EXPECT_EQ(SnapshotCheck::compare(snapshot, reduceWithColors(treeOf(after))), expected);
    EXPECT_EQ(SnapshotCheck::compare(snapshot, *treeOf(after)), expected);
    EXPECT_TRUE(SnapshotCheck::compare(snapshot, snapshot).empty());
}

TEST(SnapshotCheck, AgainstAListOfFolders)
{
    Snapshot snapshot = reduceWithoutColors(treeOf(before));
    const std::vector<std::string> folders { "/scan/Keep", "Gone", "/scan/Fresh", "/scan/Fresh/Inner", "/scan/Keep/Added", "/other/place" };
    EXPECT_EQ(SnapshotCheck::compare(snapshot, folders), (std::vector<Difference> {
                                                             Difference::disappeared("/scan/Gone/Deep"),
                                                             Difference::disappeared("/scan/Shrunk"),
                                                             Difference::appeared("/scan/Fresh"),
                                                             Difference::appeared("/scan/Keep/Added"),
                                                         }));
}
