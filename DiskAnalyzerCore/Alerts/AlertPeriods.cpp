#include "Alerts/AlertPeriods.hpp"

namespace tarnwick::AlertPeriods {

std::optional<std::string_view> fromCommandLineName(std::string_view name)
{
    for (const Period& period : all) {
        if (period.commandLineName == name)
            return period.rawValue;
    }
    return std::nullopt;
}

std::optional<std::string_view> commandLineName(std::string_view rawValue)
{
    for (const Period& period : all) {
        if (period.rawValue == rawValue)
            return period.commandLineName;
    }
    return std::nullopt;
}

bool isRawValue(std::string_view rawValue)
{
    return commandLineName(rawValue).has_value();
}

}
