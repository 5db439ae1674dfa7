#include "History/ScanRecorder.hpp"

#include "Classification/ScanAnalysis.hpp"
#include "History/SnapshotReducer.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "Scanning/ScanTree.hpp"

#include <cassert>

namespace tarnwick::ScanRecorder {

HistorySource sourceFor(const std::string& path)
{
    return HistorySource { path, VolumeIdentity::identifier(path).value_or("unknown") };
}

std::expected<Recorded, HistoryStore::StoreError> record(HistoryStore& store, std::shared_ptr<const ScanAnalysis> analysis, Date finishedAt)
{
    assert(analysis->boundaries().isCurrent(finishedAt, TimeZone::system()) && "a snapshot's date groups are those of the day it was taken");
    const std::shared_ptr<const ScanTree>& tree = analysis->tree();
    const std::string& path = tree->rootPath();
    std::optional<VolumeIdentity::Space> space = VolumeIdentity::space(path);
    SnapshotReducer::Options options;
    options.date = finishedAt;
    if (space)
        options.volume = Snapshot::Volume { space->total, space->available };
    options.analysis = analysis.get();
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
