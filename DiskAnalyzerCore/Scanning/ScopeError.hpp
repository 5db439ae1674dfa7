#pragma once

#include <string>
#include <string_view>

namespace tarnwick {

// Why a chosen location cannot be scanned. The texts are what the app shows.
struct ScopeError {
    enum class Case {
        networkVolume,         // carries the file system type
        virtualFileSystem,     // carries the file system type
        unreachable,
        macDataVolumeNotFound,
    };

    Case reason = Case::unreachable;
    std::string fileSystemType; // empty for the cases without a type

    static ScopeError networkVolume(std::string type) { return { Case::networkVolume, std::move(type) }; }
    static ScopeError virtualFileSystem(std::string type) { return { Case::virtualFileSystem, std::move(type) }; }
    static ScopeError unreachable() { return { Case::unreachable, {} }; }
    static ScopeError macDataVolumeNotFound() { return { Case::macDataVolumeNotFound, {} }; }

    [[nodiscard]] std::string_view title() const;
    [[nodiscard]] std::string detail() const;
    // For compact places; the cases without a shorter form give their title.
    [[nodiscard]] std::string_view shortText() const;

    bool operator==(const ScopeError&) const = default;
};

namespace ScopeTexts {
// Shown with a data-volume scan, so that nobody takes it for the whole disk.
inline constexpr std::string_view macDataNote = "Scans the Mac's data volume. The read-only system volume and snapshots aren't included.";
}

}
