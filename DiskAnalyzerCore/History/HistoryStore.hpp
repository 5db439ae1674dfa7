#pragma once

#include "History/Calendar.hpp"
#include "History/HistoryEntry.hpp"
#include "History/HistoryFiles.hpp"
#include "History/HistorySource.hpp"
#include "History/VolumeMeasurement.hpp"

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

// The saved snapshots of every scanned place and the record of each volume's space.
//
// Layout inside directory:
//     index.json                the Index (below)
//     kept.json                 the kept day snapshots and their notes, as an Index listing
//                               only them: what a rebuild cannot read from the files
//     .lock                     locked (flock) by a process while it changes the store
//     {folder}/source.json      the place's HistorySource
//     {folder}/current.snap     the place's latest snapshot
//     {folder}/{id}.snap        one day snapshot
//     Volumes/{volume}.log      the volume's measurements (VolumeMeasurement::logLine)
//
// index.json, pretty-printed with sorted keys; dates are seconds since 2001-01-01 UTC
// (HistoryDate), unknown optional fields are left out:
//     {
//       "nextID": 9,
//       "sources": [ {
//         "current": { "bytes": 5120, "date": 770000000.5, "file": "current.snap", "id": 8,
//                      "isKept": false, "issueCount": 0, "total": 87000000000, ... },
//         "entries": [ { "bytes": 2048, "date": 769913000, "file": "3.snap", "id": 3,
//                        "isKept": true, "note": "before the clean-up", "total": 91000000000 } ],
//         "folder": "Projects-5f0c2a91d3b7e604",
//         "source": { "path": "/home/ann/Projects", "volume": "3c1e...-uuid" }
//       } ]
//     }
//
// Several processes share the store (the app writes while the command line reads). Writers
// take the lock, read index.json again when another process changed it, write snapshot
// files before the index and delete dropped files only after it. A reader notices a changed
// index.json by its inode, size and modification time and reads it again; readers need no
// write access and take no lock, so a read-only store answers as well as any.
//
// The snapshot files are what a save commits; index.json lists them, and a volume line is
// the index entry's volume facts written out again. Nothing that decodes is given up:
// - an index.json that is damaged, empty, of the wrong shape or missing while place folders
//   exist is rebuilt from the folders (HistoryRecovery), the damaged one set aside as
//   "index.json.damaged-DATE" by the next process that may write, and the rebuild told once
//   (recoveryNotice, the log);
// - day snapshot files a killed save wrote but did not list are adopted by the next save of
//   their place, not swept; only temporary files are swept, and a listed file goes only
//   when thinning, the size limit or clear() chose it;
// - entries whose file is missing are left out when the index is read;
// - a volume line lost to a kill after the index was written is read back from the index
//   entry (measurements() merges them), so every saved day has its line.
// A save that fails (read-only folder, full disk) changes nothing: a replaced current.snap is
// put back when the index cannot be written.
//
// sizeLimit bounds the snapshot files (current and day). Above it, the oldest day snapshots
// that are not kept go first, whichever place they belong to; current and kept snapshots are
// never dropped, so they alone may exceed it.
//
// Thread-safe; observers are called on the thread that made the change, after it is done,
// and after a save that failed.
class HistoryStore {
public:
    static constexpr std::int64_t defaultSizeLimit = 200'000'000;
    static constexpr int maxKept = 20;
    // Inside the user's data folder ($XDG_DATA_HOME/tarnwick).
    static constexpr std::string_view historyFolderName = "History";
    // The in-process form of the change notice that other processes see as a new index.json.
    static constexpr std::string_view didChangeNotification = "TarnwickHistoryDidChange";
    static constexpr std::string_view indexFileName = "index.json";
    static constexpr std::string_view keptFileName = "kept.json";
    static constexpr std::string_view sourceFileName = "source.json";
    static constexpr std::string_view currentFileName = "current.snap";
    static constexpr std::string_view volumesFolderName = "Volumes";
    static constexpr std::string_view lockFileName = ".lock";

    struct StoreError {
        enum class Case {
            tooManyKept,
            unknownEntry,
            damagedIndex, // index.json is not an index: carries its path
            readFailed,   // carries the path and the system's reason
            writeFailed,  // carries the path and the system's reason
        };

        Case reason = Case::unknownEntry;
        std::string path;
        int systemError = 0; // an errno value

        static StoreError tooManyKept() { return { Case::tooManyKept, {}, 0 }; }
        static StoreError unknownEntry() { return { Case::unknownEntry, {}, 0 }; }
        static StoreError damagedIndex(std::string path) { return { Case::damagedIndex, std::move(path), 0 }; }
        static StoreError readFailed(const HistoryFiles::Failure& failure) { return { Case::readFailed, failure.path, failure.error }; }
        static StoreError writeFailed(const HistoryFiles::Failure& failure) { return { Case::writeFailed, failure.path, failure.error }; }

        [[nodiscard]] std::string message() const;

        bool operator==(const StoreError&) const = default;
    };

    struct SourceRecord {
        HistorySource source;
        std::string folder;
        std::vector<HistoryEntry> entries; // the day snapshots, oldest first
        std::optional<HistoryEntry> current;

        bool operator==(const SourceRecord&) const = default;
    };

    struct Index {
        std::int64_t nextID = 1;
        std::vector<SourceRecord> sources;

        bool operator==(const Index&) const = default;

        [[nodiscard]] const SourceRecord* record(const HistorySource& source) const;
        [[nodiscard]] SourceRecord* record(const HistorySource& source);

        // Pretty-printed JSON with sorted keys.
        [[nodiscard]] std::string encoded() const;
        // Absent for text that is not an index: not JSON, a field of the wrong type, a folder
        // or file name that would leave the store's folder, a folder named twice.
        static std::optional<Index> decode(std::string_view json);
    };

    // One scan, encoded by the caller: the snapshot's facts and the bytes of its two files.
    struct SnapshotFiles {
        Date date {};
        std::int64_t total = 0;
        std::optional<std::int64_t> volumeTotal;
        std::optional<std::int64_t> volumeAvailable;
        std::optional<bool> outOfDate;
        std::optional<std::int64_t> issueCount;
        std::optional<bool> hasAllowableIssues;
        std::optional<std::vector<std::string>> outOfDatePaths;
        std::vector<std::uint8_t> current; // written to current.snap
        std::vector<std::uint8_t> day;     // written to {id}.snap for the first scan of a day
    };

    using Clock = std::function<Date()>;
    using Observer = std::function<void(HistoryStore&)>;
    using ObserverID = std::uint64_t;

    // Creates the folder when needed and reads its index, rebuilding it when it is damaged or
    // missing (see above). Fails only when the folder can neither be found nor made.
    static std::expected<std::unique_ptr<HistoryStore>, StoreError> open(
        std::string directory, Calendar calendar, std::int64_t sizeLimit, Clock now);
    // The system's calendar and clock and the default size limit.
    static std::expected<std::unique_ptr<HistoryStore>, StoreError> open(std::string directory);

    HistoryStore(const HistoryStore&) = delete;
    HistoryStore& operator=(const HistoryStore&) = delete;

    [[nodiscard]] const std::string& directory() const { return m_directory; }
    [[nodiscard]] const Calendar& calendar() const { return m_calendar; }
    [[nodiscard]] std::int64_t sizeLimit() const { return m_sizeLimit; }
    [[nodiscard]] Date now() const { return m_now(); }

    // Why index.json cannot be used as it lies on disk (damagedIndex, readFailed), while the
    // store works from an index rebuilt from the files; absent when it can.
    [[nodiscard]] std::optional<StoreError> indexProblem();
    // What this process found and rebuilt, once a damaged or missing index was rebuilt:
    // "The history's index was damaged. Tarnwick rebuilt it from the snapshots on disk and
    // kept the damaged one as PATH."; absent otherwise.
    [[nodiscard]] std::optional<std::string> recoveryNotice();

    // The reads below first read index.json again when another process has changed it.
    [[nodiscard]] Index index();
    [[nodiscard]] std::vector<HistorySource> sources();
    [[nodiscard]] std::optional<SourceRecord> record(const HistorySource& source);
    // The day snapshots, oldest first; none for an unknown place.
    [[nodiscard]] std::vector<HistoryEntry> entries(const HistorySource& source);

    // Saves a scan: replaces current.snap, adds {id}.snap for the first scan of its calendar
    // day, thins the day snapshots, keeps the store within sizeLimit, writes the index,
    // appends the volume's line when the scan measured its volume, and posts the change
    // notice. Returns the place's record as saved. On failure nothing saved before changes.
    std::expected<SourceRecord, StoreError> save(const HistorySource& source, const SnapshotFiles& files);
    // Why the latest save failed, until a later one succeeds; absent while saves succeed.
    [[nodiscard]] std::optional<StoreError> saveError();
    // The bytes of an entry's file (the current entry or a day entry, by id).
    // When asked, also gives the signature of the version read.
    std::expected<std::vector<std::uint8_t>, StoreError> load(const HistorySource& source, std::int64_t entryID,
        HistoryFiles::FileSignature* signature = nullptr);
    // Which version of that file is on disk now, without reading it.
    std::expected<HistoryFiles::FileSignature, StoreError> signature(const HistorySource& source, std::int64_t entryID);

    // Marks a day snapshot kept (or changes the note of a kept one). tooManyKept when
    // maxKept snapshots of the whole store are already kept.
    std::expected<void, StoreError> keep(const HistorySource& source, std::int64_t entryID, std::optional<std::string> note);
    std::expected<void, StoreError> unkeep(const HistorySource& source, std::int64_t entryID);

    // Appends a measurement to the volume's log (which, like every file of the store, is
    // written whole to a temporary file and renamed into place).
    std::expected<void, StoreError> recordMeasurement(std::string_view volume, const VolumeMeasurement& measurement);
    // The volume's measurements in the order recorded, with those of saved snapshots on the
    // volume whose line is missing; none when it has neither.
    std::expected<std::vector<VolumeMeasurement>, StoreError> measurements(std::string_view volume);

    // Removes the place folders, the volume logs and the index.
    std::expected<void, StoreError> clear();

    // The bytes of all saved snapshot files, current and day snapshots.
    [[nodiscard]] std::int64_t storedBytes();
    // What a day of history takes: the day snapshots' bytes over the number of calendar days
    // they were taken on, so places scanned on the same day add up. 0 without day snapshots.
    [[nodiscard]] std::int64_t dayOfHistoryBytes();

    // Reads index.json again if another process changed it; posts the change notice and
    // returns true when it did. The app calls this from a timer to notice the command line's
    // or another app's writes.
    bool reloadIfChanged();

    ObserverID addObserver(Observer observer);
    void removeObserver(ObserverID id);

    // The subfolder name of a place: its last path component cut to 40 bytes, with anything
    // but letters, digits, "-" and "_" (and a leading dot) as "_", then "-" and 16 hex digits
    // of a hash of path and volume: "Projects-5f0c2a91d3b7e604". Another place with the same
    // name gets "-2", "-3" and so on after it.
    static std::string folderName(const HistorySource& source);
    // The text of a place's source.json, and back; absent for text that is not one.
    static std::string encodedSource(const HistorySource& source);
    static std::optional<HistorySource> decodeSource(std::string_view json);

private:
    HistoryStore(std::string directory, Calendar calendar, std::int64_t sizeLimit, Clock now, HistoryFiles::LockFile lock);

    std::string path(std::string_view relative) const;
    std::string path(const SourceRecord& record, std::string_view file) const;
    std::expected<std::string, StoreError> entryPath(const HistorySource& source, std::int64_t entryID);
    std::expected<bool, StoreError> refreshLocked();
    void rebuildLocked(StoreError problem, std::optional<HistoryFiles::FileSignature> damaged);
    std::expected<void, StoreError> setAsideDamagedIndexLocked();
    std::expected<void, StoreError> appendMeasurementLocked(std::string_view volume, const VolumeMeasurement& measurement);
    void adoptUnlisted(Index& index, SourceRecord& record) const;
    Index withoutMissingFiles(Index index) const;
    std::expected<void, StoreError> writeIndexLocked(const Index& index);
    void writeKeptLocked(const Index& index);
    std::expected<SourceRecord*, StoreError> recordForSaving(Index& index, const HistorySource& source) const;
    std::expected<HistoryEntry, StoreError> writeSnapshot(
        const SourceRecord& record, HistoryEntry entry, const std::vector<std::uint8_t>& bytes) const;
    std::vector<std::string> enforceSizeLimit(Index& index) const;
    void sweep(const SourceRecord& record) const;
    template<typename Change>
    std::expected<void, StoreError> changeIndex(Change change);
    std::expected<SourceRecord, StoreError> saveWhole(const HistorySource& source, const SnapshotFiles& files);
    void notify();

    std::string m_directory;
    Calendar m_calendar;
    std::int64_t m_sizeLimit;
    Clock m_now;
    Index m_index;

    std::mutex m_mutex; // guards m_index, m_indexSignature and the files
    HistoryFiles::LockFile m_lock;
    bool m_indexRead = false;
    std::optional<HistoryFiles::FileSignature> m_indexSignature; // of the index.json that m_index stands for
    // Why m_index was rebuilt rather than read, while index.json on disk is not yet replaced.
    std::optional<StoreError> m_indexProblem;
    std::optional<HistoryFiles::FileSignature> m_damagedSignature; // of the damaged index.json to set aside
    std::optional<Index> m_keptWritten; // what kept.json holds, once this process knows
    std::optional<std::string> m_recoveryNotice;

    std::mutex m_observerMutex; // guards the observers and m_saveError
    std::optional<StoreError> m_saveError;
    std::vector<std::pair<ObserverID, Observer>> m_observers;
    ObserverID m_nextObserver = 1;
};

}
