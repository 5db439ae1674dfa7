#include "History/HistoryFiles.hpp"

#include "Platform/WholeWrite.hpp"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace tarnwick::HistoryFiles {

namespace {

constexpr mode_t folderMode = 0700;
constexpr mode_t fileMode = 0600;

std::string parentOf(const std::string& path)
{
    std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

FileSignature signatureOf(const struct stat& info)
{
    return { static_cast<std::uint64_t>(info.st_dev), static_cast<std::uint64_t>(info.st_ino), info.st_size,
        info.st_mtim.tv_sec, info.st_mtim.tv_nsec };
}

// A rename is durable only once the folder that holds the name is flushed too.
void syncFolder(const std::string& folder)
{
    int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

}

bool isTemporaryName(std::string_view name)
{
    if (name.size() != temporaryPrefix.size() + 6 || !name.starts_with(temporaryPrefix))
        return false;
    for (char c : name.substr(temporaryPrefix.size())) {
        bool alphanumeric = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (!alphanumeric)
            return false;
    }
    return true;
}

std::expected<FileSignature, Failure> writeAtomically(const std::string& path, std::span<const std::uint8_t> bytes,
    std::optional<std::int64_t> modifiedSeconds)
{
    const std::string folder = parentOf(path);
    std::string temporary = folder + "/" + std::string(temporaryPrefix) + "XXXXXX";
    int descriptor = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (descriptor < 0)
        return std::unexpected(Failure { path, errno });
    struct stat info {};
    bool written = ::fchmod(descriptor, fileMode) == 0 && writeWhole(descriptor, bytes.data(), bytes.size());
    if (written && modifiedSeconds) {
        const struct timespec times[2] = { { 0, UTIME_OMIT }, { static_cast<time_t>(*modifiedSeconds), 0 } };
        written = ::futimens(descriptor, times) == 0;
    }
    written = written && ::fsync(descriptor) == 0 && ::fstat(descriptor, &info) == 0;
    int error = errno;
    ::close(descriptor);
    if (!written || ::rename(temporary.c_str(), path.c_str()) != 0) {
        error = written ? errno : error;
        ::unlink(temporary.c_str());
        return std::unexpected(Failure { path, error });
    }
    syncFolder(folder);
    return signatureOf(info);
}

std::expected<FileSignature, Failure> writeAtomically(const std::string& path, std::string_view text)
{
    return writeAtomically(path, std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

std::expected<std::vector<std::uint8_t>, Failure> readWhole(const std::string& path, FileSignature* signature)
{
    int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return std::unexpected(Failure { path, errno });
    std::vector<std::uint8_t> bytes;
    struct stat info {};
    if (::fstat(descriptor, &info) == 0) {
        if (info.st_size > 0)
            bytes.reserve(static_cast<std::size_t>(info.st_size));
        if (signature)
            *signature = signatureOf(info);
    }
    std::uint8_t buffer[65536];
    while (true) {
        ssize_t count = ::read(descriptor, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0) {
            int error = errno;
            ::close(descriptor);
            return std::unexpected(Failure { path, error });
        }
        if (count == 0)
            break;
        bytes.insert(bytes.end(), buffer, buffer + count);
    }
    ::close(descriptor);
    return bytes;
}

std::optional<FileSignature> signature(const std::string& path)
{
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0)
        return std::nullopt;
    return signatureOf(info);
}

bool exists(const std::string& path)
{
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0;
}

std::expected<void, Failure> makeFolder(const std::string& path)
{
    std::size_t position = 0;
    while (position != std::string::npos) {
        position = path.find('/', position + 1);
        std::string prefix = path.substr(0, position);
        if (prefix.empty())
            continue;
        if (::mkdir(prefix.c_str(), folderMode) != 0 && errno != EEXIST)
            return std::unexpected(Failure { prefix, errno });
    }
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0)
        return std::unexpected(Failure { path, errno });
    if (!S_ISDIR(info.st_mode))
        return std::unexpected(Failure { path, ENOTDIR });
    return {};
}

std::expected<void, Failure> remove(const std::string& path)
{
    std::error_code error;
    std::filesystem::remove_all(path, error);
    if (error)
        return std::unexpected(Failure { path, error.value() });
    return {};
}

std::vector<std::string> list(const std::string& folder)
{
    std::vector<std::string> names;
    DIR* directory = ::opendir(folder.c_str());
    if (!directory)
        return names;
    while (const dirent* entry = ::readdir(directory)) {
        std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    ::closedir(directory);
    return names;
}

std::expected<void, Failure> rename(const std::string& from, const std::string& to)
{
    if (::rename(from.c_str(), to.c_str()) != 0)
        return std::unexpected(Failure { from, errno });
    return {};
}

std::expected<PreservedFile, Failure> PreservedFile::hold(const std::string& path)
{
    const std::string folder = parentOf(path);
    for (int attempt = 0; attempt < 16; ++attempt) {
        // mkostemp only finds a free name; the link takes its place.
        std::string link = folder + "/" + std::string(temporaryPrefix) + "XXXXXX";
        int descriptor = ::mkostemp(link.data(), O_CLOEXEC);
        if (descriptor < 0)
            return std::unexpected(Failure { path, errno });
        ::close(descriptor);
        ::unlink(link.c_str());
        if (::link(path.c_str(), link.c_str()) == 0)
            return PreservedFile(path, std::move(link));
        if (errno == ENOENT)
            return PreservedFile(path, {});
        if (errno != EEXIST)
            return std::unexpected(Failure { path, errno });
    }
    return std::unexpected(Failure { path, EEXIST });
}

PreservedFile::PreservedFile(PreservedFile&& other) noexcept
    : m_path(std::move(other.m_path))
    , m_link(std::move(other.m_link))
    , m_done(std::exchange(other.m_done, true))
{
}

PreservedFile::~PreservedFile()
{
    if (!m_done && !m_link.empty())
        ::unlink(m_link.c_str());
}

void PreservedFile::restore()
{
    if (m_done)
        return;
    m_done = true;
    if (m_link.empty())
        ::unlink(m_path.c_str());
    else if (::rename(m_link.c_str(), m_path.c_str()) != 0)
        ::unlink(m_link.c_str());
}

std::expected<LockFile, Failure> LockFile::open(const std::string& path)
{
    int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, fileMode);
    if (descriptor < 0 && (errno == EROFS || errno == EACCES || errno == EPERM))
        descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0 && errno != ENOENT && errno != EROFS && errno != EACCES && errno != EPERM)
        return std::unexpected(Failure { path, errno });
    return LockFile(descriptor, path);
}

LockFile::LockFile(LockFile&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
    , m_path(std::move(other.m_path))
{
}

LockFile& LockFile::operator=(LockFile&& other) noexcept
{
    if (this != &other) {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
        m_descriptor = std::exchange(other.m_descriptor, -1);
        m_path = std::move(other.m_path);
    }
    return *this;
}

LockFile::~LockFile()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

std::expected<void, Failure> LockFile::lock()
{
    if (m_descriptor < 0)
        return {};
    while (::flock(m_descriptor, LOCK_EX) != 0) {
        if (errno != EINTR)
            return std::unexpected(Failure { m_path, errno });
    }
    return {};
}

void LockFile::unlock()
{
    if (m_descriptor >= 0)
        ::flock(m_descriptor, LOCK_UN);
}

}
