#include "History/HistoryStore.hpp"

#include "History/HistoryDate.hpp"
#include "History/HistoryRecovery.hpp"
#include "History/HistoryThinning.hpp"
#include "Platform/SystemLog.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <set>
#include <unordered_set>

namespace tarnwick {

namespace {

using StoreError = HistoryStore::StoreError;

constexpr std::size_t folderNameLength = 40;

std::uint64_t fnv1a(std::string_view text, std::uint64_t hash = 0xCBF29CE484222325ull)
{
    for (unsigned char c : text) {
        hash ^= c;
        hash *= 0x100000001B3ull;
    }
    return hash;
}

std::string withoutTrailingSlashes(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

HistoryEntry entryFor(const HistoryStore::SnapshotFiles& files, std::int64_t id, std::string file)
{
    HistoryEntry entry;
    entry.id = id;
    entry.date = HistoryDate::normalized(files.date);
    entry.total = files.total;
    entry.volumeTotal = files.volumeTotal;
    entry.volumeAvailable = files.volumeAvailable;
    entry.file = std::move(file);
    entry.outOfDate = files.outOfDate;
    entry.issueCount = files.issueCount;
    entry.hasAllowableIssues = files.hasAllowableIssues;
    entry.outOfDatePaths = files.outOfDatePaths;
    return entry;
}

}

std::expected<std::unique_ptr<HistoryStore>, StoreError> HistoryStore::open(
    std::string directory, Calendar calendar, std::int64_t sizeLimit, Clock now)
{
    directory = withoutTrailingSlashes(std::move(directory));
    // A store that may only be read is still read: the folder need only be there.
    if (auto made = HistoryFiles::makeFolder(directory); !made && !HistoryFiles::exists(directory))
        return std::unexpected(StoreError::writeFailed(made.error()));
    auto lock = HistoryFiles::LockFile::open(directory + "/" + std::string(lockFileName));
    if (!lock)
        return std::unexpected(StoreError::writeFailed(lock.error()));
    if (!now)
        now = [] { return std::chrono::system_clock::now(); };
    std::unique_ptr<HistoryStore> store(
        new HistoryStore(std::move(directory), std::move(calendar), sizeLimit, std::move(now), std::move(*lock)));
    {
        std::lock_guard guard(store->m_mutex);
        (void)store->refreshLocked();
        if (store->m_indexProblem) {
            // Write the rebuilt index at once where the store may be written; a read-only
            // store goes on with the rebuild in memory.
            HistoryFiles::ScopedLock lock(store->m_lock);
            if (lock.lock()) {
                (void)store->refreshLocked();
                if (store->m_indexProblem)
                    (void)store->writeIndexLocked(store->m_index);
            }
        }
    }
    return store;
}

std::expected<std::unique_ptr<HistoryStore>, StoreError> HistoryStore::open(std::string directory)
{
    return open(std::move(directory), Calendar::current(), defaultSizeLimit, nullptr);
}

HistoryStore::HistoryStore(std::string directory, Calendar calendar, std::int64_t sizeLimit, Clock now, HistoryFiles::LockFile lock)
    : m_directory(std::move(directory))
    , m_calendar(std::move(calendar))
    , m_sizeLimit(sizeLimit)
    , m_now(std::move(now))
    , m_lock(std::move(lock))
{
}

std::string HistoryStore::path(std::string_view relative) const
{
    return m_directory + "/" + std::string(relative);
}

std::string HistoryStore::path(const SourceRecord& record, std::string_view file) const
{
    return m_directory + "/" + record.folder + "/" + std::string(file);
}

std::string HistoryStore::folderName(const HistorySource& source)
{
    std::string_view path = source.path;
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    std::string_view last = path.substr(path.rfind('/') == std::string_view::npos ? 0 : path.rfind('/') + 1);
    std::string name = last.empty() ? std::string("Root") : std::string(last.substr(0, folderNameLength));
    for (char& c : name) {
        bool plain = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' || c == '_';
        if (!plain)
            c = '_';
    }
    char hash[17];
    std::snprintf(hash, sizeof hash, "%016llx",
        static_cast<unsigned long long>(fnv1a(source.volume, fnv1a(std::string_view("\0", 1), fnv1a(source.path)))));
    return name + "-" + hash;
}

// Reads index.json when it is not the version in memory. True when what the index says changed.
// An index that cannot be used is rebuilt from the files; the rebuild is what the store then
// works from, and only a new index.json is read again.
std::expected<bool, StoreError> HistoryStore::refreshLocked()
{
    const std::string indexPath = path(indexFileName);
    auto current = HistoryFiles::signature(indexPath);
    if (m_indexRead && current == m_indexSignature)
        return false;
    m_indexRead = true;
    Index before = m_index;
    HistoryFiles::FileSignature signature;
    auto bytes = HistoryFiles::readWhole(indexPath, &signature);
    if (bytes) {
        auto decoded = Index::decode(std::string_view(reinterpret_cast<const char*>(bytes->data()), bytes->size()));
        if (decoded) {
            m_index = withoutMissingFiles(std::move(*decoded));
            m_indexSignature = signature;
            m_indexProblem.reset();
            m_damagedSignature.reset();
            // A place folder the index does not list holds snapshots all the same; the next
            // write of the index lists it.
            if (HistoryRecovery::adoptUnlistedFolders(m_directory, m_index))
                m_indexProblem = StoreError::damagedIndex(indexPath);
        } else {
            rebuildLocked(StoreError::damagedIndex(indexPath), signature);
            m_indexSignature = signature;
        }
    } else if (bytes.error().error == ENOENT) {
        // No index.json: a new store, one that another process has just cleared, or one whose
        // index was deleted behind its back while its place folders are still there.
        m_indexSignature.reset();
        m_damagedSignature.reset();
        if (HistoryRecovery::hasPlaceFolders(m_directory)) {
            rebuildLocked(StoreError::readFailed(bytes.error()), std::nullopt);
        } else {
            m_index = Index {};
            m_indexProblem.reset();
        }
    } else {
        rebuildLocked(StoreError::readFailed(bytes.error()), std::nullopt);
        m_indexSignature = current;
    }
    return m_index != before;
}

void HistoryStore::rebuildLocked(StoreError problem, std::optional<HistoryFiles::FileSignature> damaged)
{
    // An index that could not be read leaves no kept marks behind; their copy has them.
    Index previous = m_index;
    for (const SourceRecord& record : HistoryRecovery::readKept(m_directory).sources) {
        if (!previous.record(record.source))
            previous.sources.push_back(record);
    }
    m_index = HistoryRecovery::rebuild(m_directory, previous);
    m_indexProblem = problem;
    m_damagedSignature = damaged;
    const bool missing = problem.reason == StoreError::Case::readFailed && problem.systemError == ENOENT;
    std::string notice = std::string("The history's index was ") + (missing ? "missing" : "damaged")
        + ". Tarnwick rebuilt it from the snapshots on disk";
    notice += damaged ? " and keeps the damaged one beside it." : ".";
    if (!m_recoveryNotice)
        SystemLog::write(SystemLog::Level::error, "history", notice + " (" + problem.message() + ")");
    m_recoveryNotice = notice;
}

// Moves a damaged index.json out of the way, under a name that says when, before the rebuilt
// index takes its place: it may still hold what the rebuild could not recover (notes).
std::expected<void, StoreError> HistoryStore::setAsideDamagedIndexLocked()
{
    const std::string indexPath = path(indexFileName);
    if (!m_damagedSignature || HistoryFiles::signature(indexPath) != m_damagedSignature)
        return {};
    std::time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(m_now()));
    std::tm parts {};
    gmtime_r(&seconds, &parts);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H%M%SZ", &parts);
    std::string aside = indexPath + ".damaged-" + stamp;
    for (int suffix = 2; HistoryFiles::exists(aside); ++suffix)
        aside = indexPath + ".damaged-" + stamp + "-" + std::to_string(suffix);
    if (auto moved = HistoryFiles::rename(indexPath, aside); !moved)
        return std::unexpected(StoreError::writeFailed(moved.error()));
    m_damagedSignature.reset();
    m_recoveryNotice = "The history's index was damaged. Tarnwick rebuilt it from the snapshots on disk and kept the damaged one as "
        + aside + ".";
    return {};
}

// Leaves out entries whose file is gone, so that everything the index lists can be loaded.
HistoryStore::Index HistoryStore::withoutMissingFiles(Index index) const
{
    for (SourceRecord& record : index.sources) {
        std::erase_if(record.entries, [&](const HistoryEntry& entry) { return !HistoryFiles::exists(path(record, entry.file)); });
        if (record.current && !HistoryFiles::exists(path(record, record.current->file)))
            record.current.reset();
    }
    return index;
}

std::expected<void, StoreError> HistoryStore::writeIndexLocked(const Index& index)
{
    if (auto aside = setAsideDamagedIndexLocked(); !aside)
        return aside;
    writeKeptLocked(index);
    auto written = HistoryFiles::writeAtomically(path(indexFileName), index.encoded());
    if (!written)
        return std::unexpected(StoreError::writeFailed(written.error()));
    m_index = index;
    m_indexSignature = *written;
    m_indexProblem.reset();
    m_damagedSignature.reset();
    return {};
}

// The kept marks and notes are the one thing of the index that the snapshot files cannot give
// back, so they are written twice; kept.json is only read when index.json cannot be. It is
// written before the index, and only when the marks changed, so most saves don't touch it.
void HistoryStore::writeKeptLocked(const Index& index)
{
    Index kept = HistoryRecovery::keptOnly(index);
    if (!m_keptWritten)
        m_keptWritten = HistoryRecovery::readKept(m_directory);
    if (m_keptWritten == kept)
        return;
    // A failure here leaves the marks in the index alone, as before this copy existed.
    if (HistoryFiles::writeAtomically(path(keptFileName), kept.encoded()))
        m_keptWritten = std::move(kept);
}

std::optional<StoreError> HistoryStore::indexProblem()
{
    std::lock_guard guard(m_mutex);
    (void)refreshLocked();
    return m_indexProblem;
}

std::optional<std::string> HistoryStore::recoveryNotice()
{
    std::lock_guard guard(m_mutex);
    (void)refreshLocked();
    return m_recoveryNotice;
}

HistoryStore::Index HistoryStore::index()
{
    std::lock_guard guard(m_mutex);
    (void)refreshLocked(); // a damaged or unreadable index.json is rebuilt from the files
    return m_index;
}

std::vector<HistorySource> HistoryStore::sources()
{
    std::vector<HistorySource> list;
    for (const SourceRecord& record : index().sources)
        list.push_back(record.source);
    return list;
}

std::optional<HistoryStore::SourceRecord> HistoryStore::record(const HistorySource& source)
{
    std::lock_guard guard(m_mutex);
    (void)refreshLocked();
    const SourceRecord* found = m_index.record(source);
    return found ? std::optional(*found) : std::nullopt;
}

std::vector<HistoryEntry> HistoryStore::entries(const HistorySource& source)
{
    auto found = record(source);
    return found ? found->entries : std::vector<HistoryEntry> {};
}

std::expected<HistoryStore::SourceRecord*, StoreError> HistoryStore::recordForSaving(Index& index, const HistorySource& source) const
{
    if (SourceRecord* existing = index.record(source)) {
        // The folder may have been removed behind the store's back; its entries are gone already.
        if (auto made = HistoryFiles::makeFolder(m_directory + "/" + existing->folder); !made)
            return std::unexpected(StoreError::writeFailed(made.error()));
        return existing;
    }
    const std::string base = folderName(source);
    std::string folder = base;
    for (int suffix = 2; std::any_of(index.sources.begin(), index.sources.end(), [&](const SourceRecord& r) { return r.folder == folder; }); ++suffix)
        folder = base + "-" + std::to_string(suffix);
    // A folder of that name that the index does not list was left by a save that never
    // finished; it is taken over, and its unlisted files are swept after this save.
    SourceRecord record { source, folder, {}, std::nullopt };
    if (auto made = HistoryFiles::makeFolder(m_directory + "/" + folder); !made)
        return std::unexpected(StoreError::writeFailed(made.error()));
    if (auto written = HistoryFiles::writeAtomically(path(record, sourceFileName), encodedSource(source)); !written)
        return std::unexpected(StoreError::writeFailed(written.error()));
    index.sources.push_back(std::move(record));
    return &index.sources.back();
}

std::expected<HistoryEntry, StoreError> HistoryStore::writeSnapshot(
    const SourceRecord& record, HistoryEntry entry, const std::vector<std::uint8_t>& bytes) const
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(entry.date.time_since_epoch()).count();
    auto written = HistoryFiles::writeAtomically(path(record, entry.file), std::span(bytes), seconds);
    if (!written)
        return std::unexpected(StoreError::writeFailed(written.error()));
    entry.bytes = static_cast<std::int64_t>(bytes.size());
    return entry;
}

std::expected<HistoryStore::SourceRecord, StoreError> HistoryStore::save(const HistorySource& source, const SnapshotFiles& files)
{
    auto saved = saveWhole(source, files);
    {
        std::lock_guard guard(m_observerMutex);
        m_saveError = saved ? std::nullopt : std::optional(saved.error());
    }
    // Observers hear of a failed save too: nothing changed, but the user should learn of it.
    if (!saved)
        notify();
    return saved;
}

std::optional<HistoryStore::StoreError> HistoryStore::saveError()
{
    std::lock_guard guard(m_observerMutex);
    return m_saveError;
}

std::expected<HistoryStore::SourceRecord, StoreError> HistoryStore::saveWhole(const HistorySource& source, const SnapshotFiles& files)
{
    SourceRecord saved;
    {
        std::lock_guard guard(m_mutex);
        HistoryFiles::ScopedLock lock(m_lock);
        if (auto locked = lock.lock(); !locked)
            return std::unexpected(StoreError::writeFailed(locked.error()));
        if (auto refreshed = refreshLocked(); !refreshed)
            return std::unexpected(refreshed.error());

        // Work on a copy: a failure on the way leaves the index in memory and on disk as it was.
        Index updated = m_index;
        auto found = recordForSaving(updated, source);
        if (!found)
            return std::unexpected(found.error());
        SourceRecord& record = **found;
        adoptUnlisted(updated, record);

        const Date date = HistoryDate::normalized(files.date);
        const std::int64_t currentID = updated.nextID++;
        // A day snapshot a rebuild listed unreadable, dated this day (damage moves a file's date
        // to the day it happened), gives way to this scan's: otherwise it would stand for the
        // day, and thinning would keep it over an intact one. A kept one stays.
        std::vector<std::string> replacedDays;
        std::erase_if(record.entries, [&](const HistoryEntry& entry) {
            if (!entry.isUnreadable || entry.isKept || !m_calendar.isSameDay(entry.date, date))
                return false;
            replacedDays.push_back(path(record, entry.file));
            return true;
        });
        bool hasDay = std::any_of(record.entries.begin(), record.entries.end(),
            [&](const HistoryEntry& entry) { return m_calendar.isSameDay(entry.date, date); });
        if (!hasDay) {
            std::int64_t id = updated.nextID++;
            auto day = writeSnapshot(record, entryFor(files, id, std::to_string(id) + ".snap"), files.day);
            if (!day)
                return std::unexpected(day.error());
            record.entries.push_back(std::move(*day));
        }

        // current.snap is the one file a save replaces: its previous version is held until the
        // index that describes the new one is written, and put back if that fails.
        auto previous = HistoryFiles::PreservedFile::hold(path(record, currentFileName));
        if (!previous)
            return std::unexpected(StoreError::writeFailed(previous.error()));
        auto current = writeSnapshot(record, entryFor(files, currentID, std::string(currentFileName)), files.current);
        if (!current)
            return std::unexpected(current.error());
        record.current = std::move(*current);

        std::vector<std::string> dropped = std::move(replacedDays);
        HistoryThinning::Result thinned = HistoryThinning::thin(record.entries, m_now(), m_calendar);
        for (const HistoryEntry& entry : thinned.dropped)
            dropped.push_back(path(record, entry.file));
        record.entries = std::move(thinned.kept);
        for (std::string& file : enforceSizeLimit(updated))
            dropped.push_back(std::move(file));

        saved = record;
        if (auto written = writeIndexLocked(updated); !written) {
            previous->restore();
            return std::unexpected(written.error());
        }
        // Only now that no index lists them may the dropped files go.
        for (const std::string& file : dropped)
            (void)HistoryFiles::remove(file);
        sweep(saved);
        // The index entry holds the same facts, so a line lost here is read back from it.
        if (files.volumeTotal && files.volumeAvailable)
            (void)appendMeasurementLocked(source.volume, VolumeMeasurement { date, *files.volumeTotal, *files.volumeAvailable, files.total });
    }
    notify();
    return saved;
}

// Day snapshots in the place's folder that the index does not list were written by a save
// that was killed before its index: they are the place's history all the same.
void HistoryStore::adoptUnlisted(Index& index, SourceRecord& record) const
{
    std::unordered_set<std::int64_t> ids;
    for (const SourceRecord& each : index.sources) {
        for (const HistoryEntry& entry : each.entries)
            ids.insert(entry.id);
        if (each.current)
            ids.insert(each.current->id);
    }
    std::int64_t next = index.nextID;
    std::vector<HistoryEntry> found = HistoryRecovery::unlisted(m_directory + "/" + record.folder, record, next);
    index.nextID = std::max(index.nextID, next);
    for (HistoryEntry& entry : found) {
        if (!ids.insert(entry.id).second)
            entry.id = index.nextID++;
        record.entries.push_back(std::move(entry));
    }
    std::stable_sort(record.entries.begin(), record.entries.end(), [](const HistoryEntry& a, const HistoryEntry& b) { return a.date < b.date; });
}

// Drops the oldest day snapshots that are not kept, of any place, until the snapshot files
// fit the size limit. Current snapshots and kept ones stay even when they alone exceed it.
std::vector<std::string> HistoryStore::enforceSizeLimit(Index& index) const
{
    std::int64_t total = 0;
    for (const SourceRecord& record : index.sources) {
        total += record.current ? record.current->bytes : 0;
        for (const HistoryEntry& entry : record.entries)
            total += entry.bytes;
    }
    std::vector<std::string> dropped;
    while (total > m_sizeLimit) {
        SourceRecord* oldestRecord = nullptr;
        std::vector<HistoryEntry>::iterator oldest;
        for (SourceRecord& record : index.sources) {
            auto found = std::find_if(record.entries.begin(), record.entries.end(), [](const HistoryEntry& e) { return !e.isKept; });
            if (found != record.entries.end() && (!oldestRecord || found->date < oldest->date)) {
                oldestRecord = &record;
                oldest = found;
            }
        }
        if (!oldestRecord)
            break;
        total -= oldest->bytes;
        dropped.push_back(path(*oldestRecord, oldest->file));
        oldestRecord->entries.erase(oldest);
    }
    return dropped;
}

// Removes the temporary files a killed save left. Runs under the lock, when no other process
// is writing there. A snapshot file that no entry lists is never removed here: the next save
// adopts it when it decodes, and one that does not may still be what a user wants back.
void HistoryStore::sweep(const SourceRecord& record) const
{
    for (const std::string& name : HistoryFiles::list(m_directory + "/" + record.folder)) {
        if (HistoryFiles::isTemporaryName(name))
            (void)HistoryFiles::remove(path(record, name));
    }
    for (const std::string& name : HistoryFiles::list(m_directory)) {
        if (HistoryFiles::isTemporaryName(name))
            (void)HistoryFiles::remove(path(name));
    }
}

std::expected<std::string, StoreError> HistoryStore::entryPath(const HistorySource& source, std::int64_t entryID)
{
    std::lock_guard guard(m_mutex);
    (void)refreshLocked();
    const SourceRecord* record = m_index.record(source);
    if (!record)
        return std::unexpected(StoreError::unknownEntry());
    if (record->current && record->current->id == entryID)
        return path(*record, record->current->file);
    auto found = std::find_if(record->entries.begin(), record->entries.end(), [&](const HistoryEntry& e) { return e.id == entryID; });
    if (found == record->entries.end())
        return std::unexpected(StoreError::unknownEntry());
    return path(*record, found->file);
}

std::expected<HistoryFiles::FileSignature, StoreError> HistoryStore::signature(const HistorySource& source, std::int64_t entryID)
{
    auto file = entryPath(source, entryID);
    if (!file)
        return std::unexpected(file.error());
    auto signature = HistoryFiles::signature(*file);
    if (!signature)
        return std::unexpected(StoreError::unknownEntry());
    return *signature;
}

std::expected<std::vector<std::uint8_t>, StoreError> HistoryStore::load(const HistorySource& source, std::int64_t entryID,
    HistoryFiles::FileSignature* signature)
{
    auto file = entryPath(source, entryID);
    if (!file)
        return std::unexpected(file.error());
    auto bytes = HistoryFiles::readWhole(*file, signature);
    if (!bytes) {
        // Thinned by another process since the index was read.
        if (bytes.error().error == ENOENT)
            return std::unexpected(StoreError::unknownEntry());
        return std::unexpected(StoreError::readFailed(bytes.error()));
    }
    return std::move(*bytes);
}

template<typename Change>
std::expected<void, StoreError> HistoryStore::changeIndex(Change change)
{
    {
        std::lock_guard guard(m_mutex);
        HistoryFiles::ScopedLock lock(m_lock);
        if (auto locked = lock.lock(); !locked)
            return std::unexpected(StoreError::writeFailed(locked.error()));
        if (auto refreshed = refreshLocked(); !refreshed)
            return std::unexpected(refreshed.error());
        Index updated = m_index;
        if (auto changed = change(updated); !changed)
            return changed;
        if (auto written = writeIndexLocked(updated); !written)
            return written;
    }
    notify();
    return {};
}

std::expected<void, StoreError> HistoryStore::keep(const HistorySource& source, std::int64_t entryID, std::optional<std::string> note)
{
    return changeIndex([&](Index& index) -> std::expected<void, StoreError> {
        SourceRecord* record = index.record(source);
        HistoryEntry* entry = nullptr;
        int keptCount = 0;
        for (SourceRecord& each : index.sources) {
            for (HistoryEntry& candidate : each.entries) {
                keptCount += candidate.isKept ? 1 : 0;
                if (&each == record && candidate.id == entryID)
                    entry = &candidate;
            }
        }
        if (!entry)
            return std::unexpected(StoreError::unknownEntry());
        if (!entry->isKept && keptCount >= maxKept)
            return std::unexpected(StoreError::tooManyKept());
        entry->isKept = true;
        entry->note = std::move(note);
        return {};
    });
}

std::expected<void, StoreError> HistoryStore::unkeep(const HistorySource& source, std::int64_t entryID)
{
    return changeIndex([&](Index& index) -> std::expected<void, StoreError> {
        SourceRecord* record = index.record(source);
        if (!record)
            return std::unexpected(StoreError::unknownEntry());
        auto found = std::find_if(record->entries.begin(), record->entries.end(), [&](const HistoryEntry& e) { return e.id == entryID; });
        if (found == record->entries.end())
            return std::unexpected(StoreError::unknownEntry());
        found->isKept = false;
        found->note.reset();
        return {};
    });
}

std::expected<void, StoreError> HistoryStore::clear()
{
    {
        std::lock_guard guard(m_mutex);
        HistoryFiles::ScopedLock lock(m_lock);
        if (auto locked = lock.lock(); !locked)
            return std::unexpected(StoreError::writeFailed(locked.error()));
        // The index goes first: if a removal below fails, nothing lists what is left.
        std::vector<std::string> names = HistoryFiles::list(m_directory);
        std::stable_partition(names.begin(), names.end(), [](const std::string& name) { return name == indexFileName; });
        for (const std::string& name : names) {
            if (name == lockFileName)
                continue;
            if (auto removed = HistoryFiles::remove(path(name)); !removed)
                return std::unexpected(StoreError::writeFailed(removed.error()));
        }
        m_index = Index {};
        m_indexSignature.reset();
        m_damagedSignature.reset();
    }
    notify();
    return {};
}

std::int64_t HistoryStore::storedBytes()
{
    std::int64_t total = 0;
    for (const SourceRecord& record : index().sources) {
        total += record.current ? record.current->bytes : 0;
        for (const HistoryEntry& entry : record.entries)
            total += entry.bytes;
    }
    return total;
}

std::int64_t HistoryStore::dayOfHistoryBytes()
{
    std::int64_t total = 0;
    std::set<std::int64_t> days;
    for (const SourceRecord& record : index().sources) {
        for (const HistoryEntry& entry : record.entries) {
            total += entry.bytes;
            days.insert(m_calendar.dayNumber(entry.date));
        }
    }
    return days.empty() ? 0 : total / static_cast<std::int64_t>(days.size());
}

bool HistoryStore::reloadIfChanged()
{
    bool changed = false;
    {
        std::lock_guard guard(m_mutex);
        auto refreshed = refreshLocked();
        changed = refreshed && *refreshed;
    }
    if (changed)
        notify();
    return changed;
}

HistoryStore::ObserverID HistoryStore::addObserver(Observer observer)
{
    std::lock_guard guard(m_observerMutex);
    ObserverID id = m_nextObserver++;
    m_observers.emplace_back(id, std::move(observer));
    return id;
}

void HistoryStore::removeObserver(ObserverID id)
{
    std::lock_guard guard(m_observerMutex);
    std::erase_if(m_observers, [&](const auto& pair) { return pair.first == id; });
}

void HistoryStore::notify()
{
    std::vector<Observer> observers;
    {
        std::lock_guard guard(m_observerMutex);
        for (const auto& [id, observer] : m_observers)
            observers.push_back(observer);
    }
    for (const Observer& observer : observers)
        observer(*this);
}

}
