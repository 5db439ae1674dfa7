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

TEST(AdaptiveWorkers, AllWorkersWhileTheyWaitForTheDiskFewerWhenTheProcessorsAreOverloaded)
{
    using M = AdaptiveWorkers::Measurement;
    // Four workers blocked four fifths of the time: the disk is the limit.
    AdaptiveWorkers cold;
    EXPECT_EQ(cold.decide(M { 90000, 0.2, 100, 0.2 }), AdaptiveWorkers::maximum);
    EXPECT_EQ(cold.decide(M { 60000, 0.07, 100, 0.1 }), std::nullopt); // a slower second changes nothing
    // Once the cache is warm the processors are the limit: halved, and that is final.
    EXPECT_EQ(cold.decide(M { 900000, 0.95, 100, 1.0 }), 8);
    EXPECT_EQ(cold.decide(M { 900000, 0.05, 100, 0.05 }), std::nullopt);

    // A warm scan on a busy machine: little processor time, but the workers are ready to run,
    // not waiting for the disk. More of them would only crowd the processors.
    AdaptiveWorkers crowded;
    EXPECT_EQ(crowded.decide(M { 300000, 0.2, 100, 0.98 }), std::nullopt);
    EXPECT_EQ(crowded.decide(M { 700000, 0.95, 100, 1.0 }), std::nullopt); // overloaded, but only 4

    // Fewer folders waiting than workers: more would have nothing to do.
    AdaptiveWorkers narrow;
    EXPECT_EQ(narrow.decide(M { 1000, 0.1, 3, 0.1 }), std::nullopt);

    // Without the system's account of waiting, the load stands in.
    AdaptiveWorkers unaccounted;
    EXPECT_EQ(unaccounted.decide(M { 1000, 0.1, 100, std::nullopt }), AdaptiveWorkers::maximum);
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
