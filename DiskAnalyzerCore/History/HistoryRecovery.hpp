#pragma once

#include "History/HistoryStore.hpp"

#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

// Rebuilding what the history's index says from the files themselves. The snapshot files
// are what was committed; index.json only lists them. When the index is damaged, missing or
// does not list a file that a save wrote before it was killed, the files are read back
// rather than given up: a snapshot that decodes is never lost because its listing was.
namespace HistoryRecovery {

// The entry for one snapshot file of a place's folder, from its own header: date, totals and
// volume facts. Not kept, without note. Absent when the file is missing or does not decode,
// unless damaged files are asked for: then its date is the file's modification time (which a
// save sets to the scan's date), so that the day is listed, and named as damaged, rather than
// forgotten.
enum class Damaged { leaveOut, list };
std::optional<HistoryEntry> entryFromFile(const std::string& path, std::int64_t id, std::string file, Damaged damaged = Damaged::leaveOut);

// The index of every place folder inside directory: its source.json (or, when that is
// damaged, the path its snapshots were taken of), its day snapshots "{id}.snap" and its
// current.snap, leaving out files that do not decode. Folders without a snapshot that
// decodes are left out. The kept marks of `previous` (an older index, for instance the last
// good one read) are carried over for the same place and id.
HistoryStore::Index rebuild(const std::string& directory, const HistoryStore::Index& previous = {});

// Adds the place folders that index does not list (a first save of a place killed before its
// index was written) and whose snapshots decode. True when it added any.
bool adoptUnlistedFolders(const std::string& directory, HistoryStore::Index& index);

// The day snapshot files in a place's folder that its record does not list and that decode:
// what a save wrote before it was killed. Ids are taken from nextID.
std::vector<HistoryEntry> unlisted(const std::string& folder, const HistoryStore::SourceRecord& record, std::int64_t& nextID);

// The index's kept day snapshots only (places without one left out), as kept.json holds them.
HistoryStore::Index keptOnly(const HistoryStore::Index& index);
// kept.json of the store at directory; empty when it is missing or damaged.
HistoryStore::Index readKept(const std::string& directory);

// Whether directory holds a place folder with a source.json: a history, whether or not its
// index is there.
bool hasPlaceFolders(const std::string& directory);

}

}
