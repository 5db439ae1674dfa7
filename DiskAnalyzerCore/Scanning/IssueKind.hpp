#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tarnwick {

// Why something could not be read. Raw values are stored; keep the order.
enum class IssueKind : std::uint8_t {
    permissionDenied = 0,
    notFound = 1,
    volumeUnavailable = 2,
    cloudPlaceholder = 3,
    metadataUnavailable = 4,
    other = 5,
};

inline constexpr std::array<IssueKind, 6> allIssueKinds {
    IssueKind::permissionDenied, IssueKind::notFound, IssueKind::volumeUnavailable,
    IssueKind::cloudPlaceholder, IssueKind::metadataUnavailable, IssueKind::other,
};

namespace IssueTexts {
std::string_view label(IssueKind kind);
// Absent for metadataUnavailable, which has no longer text of its own.
std::optional<std::string_view> explanation(IssueKind kind);
}

namespace IssueKinds {
// The system error number of a failed read, mapped to what a user can act on.
IssueKind forErrorNumber(int errorNumber);
// For an entry whose own attributes could not be read, where a generic error means
// the metadata is missing rather than the item.
IssueKind forEntryError(int errorNumber);
}

}
