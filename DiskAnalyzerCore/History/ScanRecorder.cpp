#include "History/ScanRecorder.hpp"

#include "Classification/ContentMap.hpp"
#include "Classification/TimeZone.hpp"
#include "History/SnapshotColors.hpp"
#include "History/SnapshotReducer.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "Scanning/ScanTree.hpp"

namespace tarnwick::ScanRecorder {

HistorySource sourceFor(const std::string& path)
{
    return HistorySource { path, VolumeIdentity::identifier(path).value_or("unknown") };
}

std::expected<Recorded, HistoryStore::StoreError> record(HistoryStore& store, std::shared_ptr<const ScanTree> tree,
    std::shared_ptr<const ContentMap> content, Date finishedAt)
{
    const std::string& path = tree->rootPath();
    std::optional<VolumeIdentity::Space> space = VolumeIdentity::space(path);
    SnapshotColors colors = SnapshotColors::make(tree, DateGroup::Boundaries::make(finishedAt, TimeZone::system()));
    if (content)
        colors.content = std::move(content);
    SnapshotReducer::Options options;
    options.date = finishedAt;
    if (space)
        options.volume = Snapshot::Volume { space->total, space->available };
    options.colors = &colors;
    Snapshot snapshot = SnapshotReducer::reduce(*tree, options);

    auto encoded = Snapshot::encodeForStore(std::move(snapshot));
    if (!encoded)
        return std::unexpected(HistoryStore::StoreError::writeFailed(HistoryFiles::Failure { path, EINVAL }));
    HistoryStore::SnapshotFiles files;
    files.date = finishedAt;
    files.total = tree->allocatedSize(NodeID::root());
    if (space) {
        files.volumeTotal = space->total;
        files.volumeAvailable = space->available;
    }
    files.issueCount = static_cast<std::int64_t>(tree->issues().size());
    files.current = std::move(encoded->current);
    files.day = std::move(encoded->day);

    HistorySource source = sourceFor(path);
    // The save writes the volume's line too, with the snapshot and its index entry.
    auto saved = store.save(source, files);
    if (!saved)
        return std::unexpected(saved.error());
    return Recorded { source, *saved };
}

}
