#include "History/HistoryStore.hpp"

#include <cstring>

namespace tarnwick {

std::string HistoryStore::StoreError::message() const
{
    switch (reason) {
    case Case::tooManyKept:
        return "You can keep up to " + std::to_string(maxKept) + " snapshots. Stop keeping one of them first.";
    case Case::unknownEntry:
        return "This snapshot isn't in the history any more.";
    case Case::damagedIndex:
        return "The history's index (" + path + ") is damaged. Clear the history to start a new one.";
    case Case::readFailed:
        return "Couldn't read " + path + ": " + std::strerror(systemError) + ".";
    case Case::writeFailed:
        return "Couldn't save to " + path + ": " + std::strerror(systemError) + ".";
    }
    return "The history couldn't be used.";
}

}
