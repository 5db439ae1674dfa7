#pragma once

#include "History/HistoryStore.hpp"

#include <expected>
#include <memory>
#include <string>

namespace tarnwick {

class ScanAnalysis;

// Saves a finished scan into the history: its snapshot (with colours) as the place's
// current snapshot and, for the first scan of a day, that day's, together with a
// measurement of the volume's space. This is how history grows by itself.
namespace ScanRecorder {

struct Recorded {
    HistorySource source;
    HistoryStore::SourceRecord record;
};

// The snapshot's colours are the analysis's own maps, made for the day the scan finished,
// so that the snapshot keeps what the window showed of the scan.
std::expected<Recorded, HistoryStore::StoreError> record(HistoryStore& store, std::shared_ptr<const ScanAnalysis> analysis, Date finishedAt);

// The source a scanned place is kept under.
HistorySource sourceFor(const std::string& path);

}

}
