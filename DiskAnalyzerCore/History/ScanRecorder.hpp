#pragma once

#include "History/HistoryStore.hpp"

#include <expected>
#include <memory>
#include <string>

namespace tarnwick {

class ScanTree;
class ContentMap;

// Saves a finished scan into the history: its snapshot (with colours) as the place's
// current snapshot and, for the first scan of a day, that day's, together with a
// measurement of the volume's space. This is how history grows by itself.
namespace ScanRecorder {

struct Recorded {
    HistorySource source;
    HistoryStore::SourceRecord record;
};

std::expected<Recorded, HistoryStore::StoreError> record(HistoryStore& store, std::shared_ptr<const ScanTree> tree,
    std::shared_ptr<const ContentMap> content, Date finishedAt);

// The source a scanned place is kept under.
HistorySource sourceFor(const std::string& path);

}

}
