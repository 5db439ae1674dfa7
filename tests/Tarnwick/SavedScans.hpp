#pragma once

#include "Classification/TreeFixture.hpp"
#include "History/HistoryStore.hpp"
#include "History/Snapshot.hpp"
#include "Classification/TimeZone.hpp"
#include "Classification/ScanAnalysis.hpp"
#include "History/SnapshotReducer.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick::testing {

inline constexpr std::int64_t MB = 1'000'000;

// A scan tree of files at relative paths, rooted at rootPath.
inline std::shared_ptr<const ScanTree> treeOf(const std::string& rootPath, const std::vector<std::pair<std::string, std::int64_t>>& files)
{
    TreeFixture fixture;
    for (const auto& [path, bytes] : files)
        fixture.add(path, bytes);
    return fixture.finish(TreeBuilder::Metadata::included, rootPath);
}

// A snapshot of a tree encoded for the store as its scan finished at date.
inline HistoryStore::SnapshotFiles filesOf(Snapshot snapshot, const ScanTree& tree, Date date, std::optional<Snapshot::Volume> volume)
{
    auto encoded = Snapshot::encodeForStore(std::move(snapshot));
    EXPECT_TRUE(encoded);
    HistoryStore::SnapshotFiles files;
    files.date = date;
    files.total = tree.allocatedSize(NodeID::root());
    if (volume) {
        files.volumeTotal = volume->total;
        files.volumeAvailable = volume->available;
    }
    if (encoded) {
        files.current = std::move(encoded->current);
        files.day = std::move(encoded->day);
    }
    return files;
}

// Saves a tree into the history as the scan of its root finished at date, the way a finished
// scan is saved (without colours, so sizes are kept to 10 MB).
inline void saveScan(HistoryStore& store, const HistorySource& source, const ScanTree& tree, Date date,
    std::optional<Snapshot::Volume> volume = std::nullopt)
{
    ASSERT_TRUE(store.save(source, filesOf(SnapshotReducer::reduce(tree, { date, volume, nullptr, nullptr }), tree, date, volume)));
}

// A scan encoded the way the app saves it, with colours, so that every reader (types too) has
// what it needs.
inline HistoryStore::SnapshotFiles filesFor(const std::shared_ptr<const ScanTree>& tree, Date date, std::optional<Snapshot::Volume> volume = std::nullopt)
{
    static const FixedTimeZone zone(0);
    auto analysis = ScanAnalysis::make(tree, DateGroup::Boundaries::make(date, zone), nullptr);
    return filesOf(SnapshotReducer::reduce(*tree, { date, volume, analysis.get(), &zone }), *tree, date, volume);
}

inline void saveWithColors(HistoryStore& store, const HistorySource& source, const std::shared_ptr<const ScanTree>& tree, Date date,
    std::optional<Snapshot::Volume> volume = std::nullopt)
{
    ASSERT_TRUE(store.save(source, filesFor(tree, date, volume)));
}

}
