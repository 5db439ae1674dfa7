#include "Scanning/IssueKind.hpp"

#include <cerrno>

namespace tarnwick {

namespace IssueTexts {

std::string_view label(IssueKind kind)
{
    switch (kind) {
    case IssueKind::permissionDenied:
        return "Access denied";
    case IssueKind::notFound:
        return "Disappeared during scan";
    case IssueKind::volumeUnavailable:
        return "Volume unavailable";
    case IssueKind::cloudPlaceholder:
        return "Cloud item not downloaded";
    case IssueKind::metadataUnavailable:
        return "Metadata unavailable";
    case IssueKind::other:
        return "Read error";
    }
    return "Read error";
}

std::optional<std::string_view> explanation(IssueKind kind)
{
    switch (kind) {
    case IssueKind::permissionDenied:
        return "Tarnwick isn't allowed to read this location. Choose it again in the dialog. If macOS privacy protection covers it, Full Disk Access in System Settings may help.";
    case IssueKind::notFound:
        return "The location no longer exists.";
    case IssueKind::volumeUnavailable:
        return "The volume is disconnected or isn't responding.";
    case IssueKind::cloudPlaceholder:
        return "The location is stored in the cloud and isn't downloaded.";
    case IssueKind::metadataUnavailable:
        return std::nullopt;
    case IssueKind::other:
        return "The location couldn't be read.";
    }
    return std::nullopt;
}

}

namespace IssueKinds {

// The table covers the error numbers 1 to 20 by number; the scanner never downloads
// anything, so number 11 is read as "not downloaded" rather than as a retry.
IssueKind forErrorNumber(int errorNumber)
{
    switch (errorNumber) {
    case 1: // EPERM
    case 13: // EACCES
        return IssueKind::permissionDenied;
    case 2: // ENOENT
    case 20: // ENOTDIR
        return IssueKind::notFound;
    case 5: // EIO
    case 6: // ENXIO
    case 19: // ENODEV
        return IssueKind::volumeUnavailable;
    case 11: // a dataless (cloud-only) item that would have to be downloaded to be read
        return IssueKind::cloudPlaceholder;
    default:
        return IssueKind::other;
    }
}

IssueKind forEntryError(int errorNumber)
{
    IssueKind kind = forErrorNumber(errorNumber);
    return kind == IssueKind::other ? IssueKind::metadataUnavailable : kind;
}

}

}
