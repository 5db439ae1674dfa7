#pragma once

#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The file operations of the history store. Every file is replaced whole: the bytes go to a
// temporary file in the same folder, are flushed to the disk, and the temporary file is then
// renamed over the old one, so a reader (or a process killed half-way) sees either the old
// file or the new one, never a mix.
namespace tarnwick::HistoryFiles {

// What failed, and the system's reason (an errno value).
struct Failure {
    std::string path;
    int error = 0;
};

// Identifies one version of a file: a rename gives a new inode, a rewrite a new time or size.
struct FileSignature {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modifiedSeconds = 0;
    std::int64_t modifiedNanoseconds = 0;

    bool operator==(const FileSignature&) const = default;
};

// Temporary files are named ".tmp." and six letters or digits; nothing else in the store is.
inline constexpr std::string_view temporaryPrefix = ".tmp.";
bool isTemporaryName(std::string_view name);

// Returns the signature of the new file. With modifiedSeconds (since 1970), the file's
// modification time is set to it: a snapshot file carries its scan's date even when it
// cannot be decoded any more.
std::expected<FileSignature, Failure> writeAtomically(const std::string& path, std::span<const std::uint8_t> bytes,
    std::optional<std::int64_t> modifiedSeconds = std::nullopt);
std::expected<FileSignature, Failure> writeAtomically(const std::string& path, std::string_view text);
// A missing file fails with ENOENT. When asked, also gives the signature of the version read.
std::expected<std::vector<std::uint8_t>, Failure> readWhole(const std::string& path, FileSignature* signature = nullptr);
// Absent when the file does not exist (or cannot be looked at).
std::optional<FileSignature> signature(const std::string& path);
bool exists(const std::string& path);

// Creates the folder, and those above it, readable by this user only. Succeeds when it exists.
std::expected<void, Failure> makeFolder(const std::string& path);
// Removes a file, or a folder with everything inside; a missing one is no failure.
std::expected<void, Failure> remove(const std::string& path);
// The names inside a folder, without "." and ".."; empty when it cannot be read.
std::vector<std::string> list(const std::string& folder);
// Moves a file to a new name; fails when the new name is taken by anything but a file.
std::expected<void, Failure> rename(const std::string& from, const std::string& to);

// The previous version of a file, held under a temporary name (a second hard link, which
// takes no room for the contents) while a change that replaces it may still be undone. A
// process killed while holding one leaves a temporary file that the next save sweeps.
class PreservedFile {
public:
    // Nothing is held when the file does not exist: restoring then removes the new one.
    static std::expected<PreservedFile, Failure> hold(const std::string& path);
    PreservedFile(PreservedFile&& other) noexcept;
    PreservedFile& operator=(PreservedFile&&) = delete;
    PreservedFile(const PreservedFile&) = delete;
    PreservedFile& operator=(const PreservedFile&) = delete;
    // Lets the previous version go, unless it was restored.
    ~PreservedFile();

    // Puts the previous version back in place of whatever is there now.
    void restore();

private:
    PreservedFile(std::string path, std::string link)
        : m_path(std::move(path))
        , m_link(std::move(link))
    {
    }
    std::string m_path;
    std::string m_link; // empty when there was no previous version
    bool m_done = false;
};

// An exclusive advisory lock (flock) on a file, held between processes while one of them
// changes the store. The lock file itself is never removed, so that every process locks the
// same inode. On a store this user may only read, the file is opened for reading (a lock
// needs no write access), and when it cannot be opened at all locking does nothing: such a
// store cannot be changed anyway, and readers never wait for the lock.
class LockFile {
public:
    static std::expected<LockFile, Failure> open(const std::string& path);
    LockFile(LockFile&& other) noexcept;
    LockFile& operator=(LockFile&& other) noexcept;
    LockFile(const LockFile&) = delete;
    LockFile& operator=(const LockFile&) = delete;
    ~LockFile();

    // Waits until no other process holds the lock.
    std::expected<void, Failure> lock();
    void unlock();

private:
    LockFile(int descriptor, std::string path)
        : m_descriptor(descriptor)
        , m_path(std::move(path))
    {
    }
    int m_descriptor = -1; // -1 without a lock file
    std::string m_path;
};

// Holds a LockFile's lock for one scope.
class ScopedLock {
public:
    explicit ScopedLock(LockFile& file)
        : m_file(file)
    {
    }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;
    ~ScopedLock()
    {
        if (m_locked)
            m_file.unlock();
    }
    std::expected<void, Failure> lock()
    {
        auto result = m_file.lock();
        m_locked = result.has_value();
        return result;
    }

private:
    LockFile& m_file;
    bool m_locked = false;
};

}
