#include "Alerts/AlertError.hpp"

#include "Alerts/AlertPeriods.hpp"
#include "Alerts/AlertTexts.hpp"

namespace tarnwick {

std::string AlertError::text() const
{
    switch (reason) {
    case Case::notFound:
        return std::string(AlertTexts::notFound);
    case Case::ambiguousShortID:
        return "Several alerts have that ID. Give the whole ID.";
    case Case::diskTakesDiskUsed:
        return std::string(AlertTexts::diskTakesDiskUsed);
    case Case::folderTakesFolderLimits:
        return std::string(AlertTexts::folderTakesFolderLimits);
    case Case::invalidPlace:
        return "Give a folder or disk by its absolute path.";
    case Case::unknownPeriod: {
        std::string names;
        for (const AlertPeriods::Period& period : AlertPeriods::all)
            names += (names.empty() ? "" : ", ") + std::string(period.commandLineName);
        return "The period is one of " + names + ".";
    }
    case Case::notSaved:
        break;
    }
    return detail;
}

}
