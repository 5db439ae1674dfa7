#include "Alerts/AlertReading.hpp"

#include "Alerts/AlertTexts.hpp"

namespace tarnwick {

std::string AlertReading::note() const
{
    if (state == State::unknown) {
        switch (unknownReason.value_or(Unknown::notMeasuredYet)) {
        case Unknown::diskNotMounted:
            return std::string(AlertTexts::diskNotMounted);
        case Unknown::capacityUnknown:
            return std::string(AlertTexts::capacityUnknown);
        case Unknown::notMeasuredYet:
            break;
        }
        return std::string(AlertTexts::notMeasuredYet);
    }
    return uncertain ? std::string(AlertTexts::uncertainSuffix) : std::string();
}

}
