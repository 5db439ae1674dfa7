#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <expected>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

struct stat;

namespace tarnwick {

// The user's settings: one JSON object in a file, a plain key for each setting ("SpaceAlerts",
// "DailyScansEnabled", ...), any JSON value under it. The app and the command line share the
// file, so every read first checks whether another process replaced it (by its inode, size
// and modification time), and every change is a read-modify-write under an advisory lock on a
// sibling ".lock" file, written whole to a temporary file, synced and renamed into place.
//
//     {
//       "DailyScansEnabled": true,
//       "SpaceAlertsNotified": ["0B5E1C2D-6F0A-4E83-9A41-2C7D8E9F1A3B"]
//     }
//
// A file that cannot be read or is not a JSON object counts as empty; the problem is logged
// and kept for readProblem(). Before the first write replaces such a file, its bytes are kept
// beside it as "defaults.json.damaged".
class UserDefaults {
public:
    struct ReadProblem {
        enum class Case { unreadable, notJSON, notAnObject };
        Case reason = Case::notJSON;
        std::string path;
        int code = 0; // errno, for unreadable

        [[nodiscard]] std::string text() const;
        bool operator==(const ReadProblem&) const = default;
    };

    struct WriteError {
        enum class Case { folderUnavailable, notLocked, notWritten };
        Case reason = Case::notWritten;
        std::string path;
        int code = 0; // errno

        [[nodiscard]] std::string text() const;
        bool operator==(const WriteError&) const = default;
    };

    // The file is created on the first write, with its folder.
    explicit UserDefaults(std::string path);
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;

    // $XDG_CONFIG_HOME/tarnwick/defaults.json, or ~/.config/tarnwick/defaults.json.
    static std::string standardPath();

    [[nodiscard]] const std::string& path() const { return m_path; }

    // Absent when the key is not set.
    [[nodiscard]] std::optional<nlohmann::json> value(std::string_view key);
    // Every setting, as one object.
    [[nodiscard]] nlohmann::json all();

    std::expected<void, WriteError> set(std::string_view key, nlohmann::json value);
    std::expected<void, WriteError> remove(std::string_view key);
    // Changes several settings in one write. change sees the file's latest content, read under
    // the lock, so that no other writer's change is lost; nothing is written when it changes
    // nothing.
    std::expected<void, WriteError> update(const std::function<void(nlohmann::json& settings)>& change);

    // What was wrong with the file at the last read; absent when it was fine or missing.
    [[nodiscard]] std::optional<ReadProblem> readProblem();

private:
    struct FileIdentity {
        bool exists = false;
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        std::int64_t size = 0;
        std::int64_t modifiedNanoseconds = 0;
        bool operator==(const FileIdentity&) const = default;
    };

    static FileIdentity identityOf(const struct stat& status);
    void refreshIfChanged();
    void load();
    std::expected<void, WriteError> writeLocked(const nlohmann::json& settings);

    std::string m_path;
    std::mutex m_mutex;
    bool m_loaded = false;
    FileIdentity m_identity;
    nlohmann::json m_settings = nlohmann::json::object();
    std::optional<ReadProblem> m_problem;
};

}
