#pragma once

#include "History/HistoryPeriod.hpp"
#include "History/HistoryStore.hpp"
#include "History/Snapshot.hpp"
#include "History/OutlineCache.hpp"
#include "History/SnapshotOutline.hpp"

#include <expected>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace tarnwick {

// The one way the history's snapshot files are read for answers. A damaged file is skipped,
// never fatal: the latest snapshot falls back to the newest intact day snapshot, the start of
// a period to the intact one nearest to it, and the caller learns which entries were passed
// over so that it can say so.
namespace SnapshotLoader {

enum class Problem {
    missing, // the file is gone (thinned by another process, deleted behind the store's back)
    damaged, // the file does not decode, or its folders don't fit together
};

struct Loaded {
    // The entry as its file tells it: when a save was killed between replacing current.snap
    // and writing the index, the index still has the previous scan's facts, and the file wins.
    HistoryEntry entry;
    std::shared_ptr<const Snapshot> snapshot;
};

std::expected<Loaded, Problem> load(HistoryStore& store, const HistorySource& source, const HistoryEntry& entry);

// The latest intact snapshot of a place: its current one, or the newest intact day snapshot.
struct Latest {
    Loaded loaded;
    bool isCurrent = true;
    std::vector<HistoryEntry> skipped; // newer entries that could not be read, newest first
};
std::optional<Latest> latest(HistoryStore& store, const HistoryStore::SourceRecord& record);

// The day snapshot at the start of a period (HistoryPeriod::startEntry), or when it cannot be
// read the intact day snapshot nearest in date to it (the earlier of two as near). Absent
// when no day snapshot can be read.
struct Start {
    Loaded loaded;
    std::optional<HistoryEntry> replaced; // the entry the period asked for, when it was unreadable
    // false when the history is shorter than the period: the start is then the earliest day
    // snapshot, and an answer says when the history starts.
    bool reachesPeriod = true;
};
std::optional<Start> start(HistoryStore& store, const HistoryStore::SourceRecord& record, HistoryPeriod period);

// Every day snapshot of a place, oldest first, followed by the current one when it is newer
// than the last of them (the first scan of a day is both). snapshot is null for an entry
// whose file is damaged or gone.
struct Item {
    HistoryEntry entry;
    std::shared_ptr<const Snapshot> snapshot;
};
std::vector<Item> series(HistoryStore& store, const HistoryStore::SourceRecord& record);

// The same entries, each file read for one place only; outline is absent where series() has
// no snapshot.
struct OutlineItem {
    HistoryEntry entry;
    std::optional<SnapshotOutline> outline;
};
// With a cache, files read before are not read again, and what is read is added to it.
std::vector<OutlineItem> outlineSeries(HistoryStore& store, const HistoryStore::SourceRecord& record, std::string_view place,
    OutlineCache* cache = nullptr);

}

}
