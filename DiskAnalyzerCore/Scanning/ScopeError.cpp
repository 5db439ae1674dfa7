#include "Scanning/ScopeError.hpp"

namespace tarnwick {

std::string_view ScopeError::title() const
{
    switch (reason) {
    case Case::networkVolume:
        return "Network volumes aren't supported";
    case Case::virtualFileSystem:
        return "This file system isn't supported";
    case Case::unreachable:
        return "The location isn't available";
    case Case::macDataVolumeNotFound:
        return "Couldn't identify your Mac's data volume";
    }
    return "The location isn't available";
}

std::string ScopeError::detail() const
{
    switch (reason) {
    case Case::networkVolume:
        return "This location is on a network volume (" + fileSystemType
            + "). This version scans local disks only. Choose a folder on a local disk.";
    case Case::virtualFileSystem:
        return "This location is on a virtual file system (" + fileSystemType + "). Choose a folder on a local disk.";
    case Case::unreachable:
        return "It may have been disconnected, renamed or removed.";
    case Case::macDataVolumeNotFound:
        return "Tarnwick couldn't reliably determine which volume holds your data, so it won't present a partial scan "
               "as the whole disk. Choose a folder to scan instead, such as your home folder.";
    }
    return {};
}

std::string_view ScopeError::shortText() const
{
    switch (reason) {
    case Case::networkVolume:
        return "Network volumes aren't supported in this version.";
    case Case::virtualFileSystem:
        return "Virtual file systems aren't supported.";
    case Case::unreachable:
    case Case::macDataVolumeNotFound:
        break;
    }
    return title();
}

}
