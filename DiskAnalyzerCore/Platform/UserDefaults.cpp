#include "Platform/UserDefaults.hpp"
#include "Platform/WholeWrite.hpp"

#include "Platform/SystemLog.hpp"
#include "Platform/UserFolders.hpp"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace tarnwick {

namespace {

// Settings are a few kilobytes; anything far larger is not a settings file.
constexpr std::int64_t largestFile = 16 << 20;

class FileDescriptor {
public:
    explicit FileDescriptor(int fd)
        : m_fd(fd)
    {
    }
    ~FileDescriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    [[nodiscard]] int get() const { return m_fd; }

private:
    int m_fd;
};

std::string folderOf(const std::string& path)
{
    std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string errorText(int code)
{
    return code == 0 ? std::string("unknown error") : std::string(std::strerror(code));
}

}

std::string UserDefaults::ReadProblem::text() const
{
    switch (reason) {
    case Case::unreadable:
        return "Tarnwick couldn't read its settings in " + path + " (" + errorText(code) + "). It uses the defaults.";
    case Case::notJSON:
    case Case::notAnObject:
        break;
    }
    return "Tarnwick's settings in " + path + " are damaged. It uses the defaults and keeps the damaged file as "
        + path + ".damaged when it next saves its settings.";
}

std::string UserDefaults::WriteError::text() const
{
    switch (reason) {
    case Case::folderUnavailable:
        return "Tarnwick couldn't create the folder for its settings, " + path + " (" + errorText(code) + ").";
    case Case::notLocked:
        return "Tarnwick couldn't lock its settings in " + path + " (" + errorText(code) + ").";
    case Case::notWritten:
        break;
    }
    return "Tarnwick couldn't save its settings in " + path + " (" + errorText(code) + ").";
}

UserDefaults::UserDefaults(std::string path)
    : m_path(std::move(path))
{
}

std::string UserDefaults::standardPath()
{
    return UserFolders::configFolder() + "/defaults.json";
}

std::optional<nlohmann::json> UserDefaults::value(std::string_view key)
{
    std::lock_guard lock(m_mutex);
    refreshIfChanged();
    auto found = m_settings.find(key);
    if (found == m_settings.end())
        return std::nullopt;
    return *found;
}

nlohmann::json UserDefaults::all()
{
    std::lock_guard lock(m_mutex);
    refreshIfChanged();
    return m_settings;
}

std::expected<void, UserDefaults::WriteError> UserDefaults::set(std::string_view key, nlohmann::json value)
{
    return update([&](nlohmann::json& settings) { settings[std::string(key)] = std::move(value); });
}

std::expected<void, UserDefaults::WriteError> UserDefaults::remove(std::string_view key)
{
    return update([&](nlohmann::json& settings) { settings.erase(std::string(key)); });
}

std::optional<UserDefaults::ReadProblem> UserDefaults::readProblem()
{
    std::lock_guard lock(m_mutex);
    refreshIfChanged();
    return m_problem;
}

UserDefaults::FileIdentity UserDefaults::identityOf(const struct stat& status)
{
    return { true, status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec * 1'000'000'000LL + status.st_mtim.tv_nsec };
}

void UserDefaults::refreshIfChanged()
{
    struct stat status;
    if (::stat(m_path.c_str(), &status) != 0) {
        if (errno != ENOENT) {
            load(); // reports why
            return;
        }
        if (m_loaded && !m_identity.exists)
            return;
        m_identity = {};
        m_settings = nlohmann::json::object();
        m_problem.reset();
        m_loaded = true;
        return;
    }
    if (!m_loaded || identityOf(status) != m_identity)
        load();
}

void UserDefaults::load()
{
    m_loaded = true;
    m_settings = nlohmann::json::object();
    m_problem.reset();
    m_identity = {};
    auto fail = [&](ReadProblem::Case reason, int code) {
        m_problem = ReadProblem { reason, m_path, code };
        SystemLog::write(SystemLog::Level::error, "defaults", m_problem->text());
    };

    FileDescriptor file(::open(m_path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status;
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0) {
        if (errno != ENOENT)
            fail(ReadProblem::Case::unreadable, errno);
        return;
    }
    m_identity = identityOf(status);
    if (!S_ISREG(status.st_mode) || status.st_size > largestFile)
        return fail(ReadProblem::Case::unreadable, S_ISREG(status.st_mode) ? EFBIG : EISDIR);

    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t filled = 0;
    while (filled < text.size()) {
        ssize_t count = ::read(file.get(), text.data() + filled, text.size() - filled);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return fail(ReadProblem::Case::unreadable, errno);
        if (count == 0)
            break;
        filled += static_cast<std::size_t>(count);
    }
    text.resize(filled);

    nlohmann::json parsed = nlohmann::json::parse(text, nullptr, false);
    if (parsed.is_discarded())
        return fail(ReadProblem::Case::notJSON, 0);
    if (!parsed.is_object())
        return fail(ReadProblem::Case::notAnObject, 0);
    m_settings = std::move(parsed);
}

std::expected<void, UserDefaults::WriteError> UserDefaults::update(const std::function<void(nlohmann::json&)>& change)
{
    std::lock_guard lock(m_mutex);
    std::string folder = folderOf(m_path);
    if (!UserFolders::ensureFolder(folder))
        return std::unexpected(WriteError { WriteError::Case::folderUnavailable, folder, errno });

    // The lock lives on a file of its own: the settings file is replaced on every write, and a
    // lock on a replaced inode would not exclude the next writer.
    std::string lockPath = m_path + ".lock";
    FileDescriptor lockFile(::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (lockFile.get() < 0)
        return std::unexpected(WriteError { WriteError::Case::notLocked, lockPath, errno });
    while (::flock(lockFile.get(), LOCK_EX) != 0) {
        if (errno != EINTR)
            return std::unexpected(WriteError { WriteError::Case::notLocked, lockPath, errno });
    }

    refreshIfChanged();
    nlohmann::json next = m_settings;
    change(next);
    if (next == m_settings)
        return {};
    return writeLocked(next);
}

std::expected<void, UserDefaults::WriteError> UserDefaults::writeLocked(const nlohmann::json& settings)
{
    auto failed = [&](int code) { return std::unexpected(WriteError { WriteError::Case::notWritten, m_path, code }); };
    std::vector<char> temporary(m_path.begin(), m_path.end());
    const std::string_view suffix = ".XXXXXX";
    temporary.insert(temporary.end(), suffix.begin(), suffix.end());
    temporary.push_back('\0');
    FileDescriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
    if (file.get() < 0)
        return failed(errno);

    std::string text = settings.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
    struct stat status;
    if (::fchmod(file.get(), 0600) != 0 || !writeWhole(file.get(), text) || ::fsync(file.get()) != 0
        || ::fstat(file.get(), &status) != 0) {
        int code = errno;
        ::unlink(temporary.data());
        return failed(code);
    }
    if (m_problem && m_identity.exists) {
        // Keep what the user may want to recover; the link is atomic, so the damaged file
        // is never missing under both names.
        std::string damaged = m_path + ".damaged";
        ::unlink(damaged.c_str());
        if (::link(m_path.c_str(), damaged.c_str()) != 0)
            SystemLog::write(SystemLog::Level::error, "defaults", "couldn't keep the damaged settings: " + errorText(errno));
    }
    if (::rename(temporary.data(), m_path.c_str()) != 0) {
        int code = errno;
        ::unlink(temporary.data());
        return failed(code);
    }
    FileDescriptor folder(::open(folderOf(m_path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.get() >= 0)
        ::fsync(folder.get());

    m_settings = settings;
    m_problem.reset();
    m_identity = identityOf(status);
    return {};
}

}
