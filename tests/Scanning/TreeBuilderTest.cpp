#include "Scanning/ScanTree.hpp"
#include "Scanning/TreeBuilder.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;

TEST(TreeBuilder, RootOnly)
{
    TreeBuilder builder("root", NodeKind::directory, std::nullopt);
    auto tree = std::move(builder).finalize("/tmp/root", ScanCoverage::whole(), TreeBuilder::Metadata::included);
    EXPECT_EQ(tree->count(), 1);
}
