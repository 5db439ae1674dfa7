#pragma once

#include "History/HistoryStore.hpp"
#include "History/Snapshot.hpp"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

// Which saved history answers for a place on disk. A place is kept by the history of a
// scanned source that is the place itself or holds it: a scan of "/" keeps the large folders
// of the whole disk, a scan of ~/Projects keeps those of the projects in finer detail and
// more recently. The deepest source wins, as it is the one scanned with the place in mind.
namespace HistoryPlaces {

// The sources whose path is place or holds it, deepest first. Of sources at one path (the
// same mount point with another disk in it), those on `volume` come first, then the one
// saved most recently.
std::vector<HistoryStore::SourceRecord> holding(
    std::span<const HistoryStore::SourceRecord> records, std::string_view place, std::optional<std::string_view> volume = std::nullopt);

// A place found in the latest snapshot of a source.
struct Located {
    HistoryStore::SourceRecord record;
    std::shared_ptr<const Snapshot> current;
    std::string place;   // the path it was found at, absolute
    std::int32_t node = 0; // the place's node in current
};

// The first of the holding sources whose latest snapshot keeps the place, trying each of
// the place's path forms (as typed, with links resolved) in turn. Absent when no snapshot
// keeps it: the place was never scanned, is under 10 MB, or its snapshots are unreadable.
std::optional<Located> locate(HistoryStore& store, std::span<const std::string> pathForms, std::optional<std::string_view> volume = std::nullopt);

// A snapshot of the store by entry id (the current entry or a day entry), decoded; absent
// when the file is gone or damaged.
std::shared_ptr<const Snapshot> load(HistoryStore& store, const HistorySource& source, std::int64_t entryID);

// The day snapshots of a record, oldest first, followed by the current one when it is newer
// than the last of them (the first scan of a day is both), each loaded; those that cannot be
// read are left out.
std::vector<std::shared_ptr<const Snapshot>> series(HistoryStore& store, const HistoryStore::SourceRecord& record);

}

}
