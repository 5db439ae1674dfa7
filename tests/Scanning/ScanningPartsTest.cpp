#include "Scanning/AdaptiveWorkers.hpp"
#include "Scanning/IssueKind.hpp"
#include "Scanning/PreviewMaker.hpp"
#include "Scanning/ScanIssue.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;

TEST(IssueKinds, ErrorNumberTable)
{
    const std::pair<int, IssueKind> cases[] = {
        { 0, IssueKind::other }, { 1, IssueKind::permissionDenied }, { 2, IssueKind::notFound }, { 3, IssueKind::other },
        { 5, IssueKind::volumeUnavailable }, { 6, IssueKind::volumeUnavailable }, { 11, IssueKind::cloudPlaceholder },
        { 13, IssueKind::permissionDenied }, { 19, IssueKind::volumeUnavailable }, { 20, IssueKind::notFound },
        { 21, IssueKind::other }, { 35, IssueKind::other }, { -1, IssueKind::other },
    };
    for (auto [number, kind] : cases)
        EXPECT_EQ(IssueKinds::forErrorNumber(number), kind) << number;
    EXPECT_EQ(IssueKinds::forEntryError(21), IssueKind::metadataUnavailable);
    EXPECT_EQ(IssueKinds::forEntryError(13), IssueKind::permissionDenied);
    EXPECT_EQ(IssueTexts::label(IssueKind::notFound), "Disappeared during scan");
    EXPECT_FALSE(IssueTexts::explanation(IssueKind::metadataUnavailable));
}

TEST(IssueKinds, ErrorObjectsFollowTheUnderlyingChain)
{
    auto posix = std::make_shared<ReadError>(ReadError { "posix", 13, "Permission denied", nullptr });
    auto middle = std::make_shared<ReadError>(ReadError { "other", 7, "middle", posix });
    ReadError outer { "cocoa", 257, "The file couldn't be opened.", middle };
    EXPECT_EQ(outer.issue(), (ReadError::Issue { IssueKind::permissionDenied, 13, "The file couldn't be opened." }));
    const std::tuple<const char*, long, IssueKind> cocoa[] = {
        { "cocoa", 4, IssueKind::notFound }, { "cocoa", 260, IssueKind::notFound }, { "cocoa", 257, IssueKind::permissionDenied },
        { "cocoa", 513, IssueKind::permissionDenied }, { "cocoa", 999, IssueKind::other }, { "elsewhere", 260, IssueKind::other },
    };
    for (auto [domain, code, kind] : cocoa) {
        ReadError error { domain, code, "text", nullptr };
        EXPECT_EQ(error.issue().kind, kind) << domain << " " << code;
        EXPECT_EQ(error.issue().code, code);
    }
}

TEST(AdaptiveWorkers, TrialsAreKeptOnlyWhenFaster)
{
    AdaptiveWorkers tuner;
    // Idle processor and plenty waiting: try 8.
    EXPECT_EQ(tuner.decide({ 1000, 0.2, 100 }), 8);
    // Not 15 % faster: back to 4, and frozen from then on.
    EXPECT_EQ(tuner.decide({ 1100, 0.2, 100 }), 4);
    EXPECT_EQ(tuner.decide({ 1000, 0.2, 100 }), std::nullopt);

    AdaptiveWorkers growing;
    EXPECT_EQ(growing.decide({ 1000, 0.2, 100 }), 8);
    EXPECT_EQ(growing.decide({ 1150, 0.2, 100 }), std::nullopt); // kept
    EXPECT_EQ(growing.decide({ 1150, 0.2, 100 }), 16);
    EXPECT_EQ(growing.decide({ 2000, 0.2, 100 }), std::nullopt);
    EXPECT_EQ(growing.decide({ 2000, 0.2, 100 }), std::nullopt); // at the maximum

    AdaptiveWorkers busy;
    EXPECT_EQ(busy.decide({ 1000, 0.6, 100 }), std::nullopt);   // processor half used
    EXPECT_EQ(busy.decide({ 1000, 0.2, 3 }), std::nullopt);     // fewer folders than workers
    EXPECT_EQ(busy.decide({ 1000, 0.95, 100 }), std::nullopt);  // overloaded, but only 4
    EXPECT_EQ(busy.decide({ 1000, 0.2, 100 }), 8);
    EXPECT_EQ(busy.decide({ 2000, 0.2, 100 }), std::nullopt);
    EXPECT_EQ(busy.decide({ 2000, 0.95, 100 }), 4);             // halved and frozen
    EXPECT_EQ(busy.decide({ 2000, 0.1, 100 }), std::nullopt);
}

TEST(PreviewMaker, KeepsLargePlacesAndMarksUnfinishedFolders)
{
    TreeBuilder builder("root", NodeKind::directory, std::nullopt);
    NodeID big = builder.addNode(NodeID::root(), { "big", NodeKind::directory });
    NodeID listing = builder.addNode(NodeID::root(), { "listing", NodeKind::directory });
    NodeID queued = builder.addNode(NodeID::root(), { "queued", NodeKind::directory });
    builder.addNode(big, { "huge", NodeKind::file, 1'000'000'000, 1'000'000'000 });
    for (int i = 0; i < 100; ++i)
        builder.addNode(listing, { "tiny", NodeKind::file, 10, 10 });
    builder.addNode(listing, { "unknown", NodeKind::file, std::nullopt, 5 });
    PreviewMaker::PendingFolders pending { { listing.value, true }, { queued.value, false } };
    auto preview = PreviewMaker::make(builder, pending, "/root", 7);
    const ScanTree& tree = *preview->tree;
    EXPECT_EQ(preview->version, 7u);
    EXPECT_EQ(preview->itemCount, builder.count());
    EXPECT_EQ(tree.allocatedSize(NodeID::root()), 1'000'001'000);
    ASSERT_TRUE(tree.node("listing") && tree.node("queued"));
    auto listed = *tree.node("listing");
    EXPECT_EQ(tree.childCount(listed), 0);           // tiny files folded into the folder
    EXPECT_EQ(tree.allocatedSize(listed), 1000);
    EXPECT_TRUE(tree.flags(listed).contains(NodeFlag::scanning));
    EXPECT_TRUE(tree.flags(*tree.node("queued")).contains(NodeFlag::contentsUnread));
    EXPECT_TRUE(tree.isIncomplete(NodeID::root()));
    EXPECT_TRUE(tree.node("big/huge"));

    auto bounded = PreviewMaker::make(builder, {}, "/root", 8, 2);
    EXPECT_EQ(bounded->tree->count(), 2);
    EXPECT_EQ(bounded->tree->allocatedSize(NodeID::root()), 1'000'001'000);
}
