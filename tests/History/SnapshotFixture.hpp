#pragma once

#include "Classification/TreeFixture.hpp"
#include "History/Snapshot.hpp"
#include "History/SnapshotReducer.hpp"

#include <memory>
#include <string>
#include <vector>

namespace tarnwick::testing {

// A fixed clock and zone, so that day numbers and date groups do not depend on the machine.
inline constexpr std::int64_t fixtureNowUnix = 1'717'243'200; // 2024-06-01 12:00:00 UTC
inline constexpr std::int64_t fixtureZoneOffset = 2 * 3600;

inline Date fixtureNow() { return Date(std::chrono::seconds(fixtureNowUnix)); }
// Stored seconds (since 2001) of a moment some days before the fixture's now.
inline std::int32_t daysAgo(int days) { return static_cast<std::int32_t>(fixtureNowUnix - TreeDate::referenceUnixSeconds - days * 86400); }

inline Snapshot reduceWithColors(const std::shared_ptr<const ScanTree>& tree)
{
    static const FixedTimeZone zone(fixtureZoneOffset);
    auto analysis = ScanAnalysis::make(tree, DateGroup::Boundaries::make(fixtureNow(), zone), nullptr);
    return SnapshotReducer::reduce(*tree, { fixtureNow(), Snapshot::Volume { 500'000'000'000, 120'000'000'000 }, analysis.get(), &zone });
}

inline Snapshot reduceWithoutColors(const std::shared_ptr<const ScanTree>& tree)
{
    static const FixedTimeZone zone(fixtureZoneOffset);
    return SnapshotReducer::reduce(*tree, { fixtureNow(), std::nullopt, nullptr, &zone });
}

// What a round trip through a file with colours keeps of a snapshot: the root exactly, every
// other node's size cut to whole 100,000 bytes and its rest parts rounded to the nearest
// 100,000 bytes (parts that come to nothing are not written).
inline Snapshot afterColorRoundTrip(Snapshot snapshot)
{
    constexpr std::int64_t unit = 100'000;
    for (std::size_t i = 1; i < snapshot.preciseAllocated.size(); ++i)
        snapshot.preciseAllocated[i] = snapshot.preciseAllocated[i] / unit * unit;
    Snapshot::Rests rests;
    for (std::int32_t node = 0; node < snapshot.nodeCount(); ++node) {
        rests.firstPart.push_back(static_cast<std::int32_t>(rests.parts.size()));
        for (RestPart part : snapshot.restContent.of(node)) {
            if (node != 0)
                part.bytes = (part.bytes + unit / 2) / unit * unit;
            if (part.bytes > 0)
                rests.parts.push_back(part);
        }
    }
    rests.firstPart.push_back(static_cast<std::int32_t>(rests.parts.size()));
    snapshot.restContent = std::move(rests);
    return snapshot;
}

// The project folder both sample trees start with: a video, a text and a build archive,
// with dates spread over the colour groups.
inline void addSampleProjects(TreeFixture& tree)
{
    tree.add(TreeFixture::Item { "Projects/app.mp4", 25'000'123, NodeKind::file, 24'000'000, daysAgo(3), daysAgo(400) });
    tree.add(TreeFixture::Item { "Projects/notes.txt", 3'000'000, NodeKind::file, std::nullopt, daysAgo(40), daysAgo(40) });
    tree.add(TreeFixture::Item { "Projects/Build/out.zip", 12'345'678, NodeKind::file, std::nullopt, daysAgo(0), daysAgo(0) });
}

// A file of a sample tree: its path below the root and its size.
struct SampleFile {
    std::string path;
    std::int64_t bytes;
};

// A snapshot with colours of a tree of files, as the reducer makes it; the folders named in
// unread could not be listed.
inline Snapshot snapshotOfFiles(const std::vector<SampleFile>& files, const std::vector<std::string>& unread = {})
{
    TreeFixture tree;
    for (const SampleFile& file : files)
        tree.add(file.path, file.bytes);
    for (const std::string& folder : unread) {
        tree.add(folder + "/", 0);
        tree.builder().markContentsUnready(tree.id(folder));
    }
    return reduceWithColors(tree.finish());
}

}
