#include "Support/Phrases.hpp"

#include "Support/ByteFormat.hpp"

#include <cmath>
#include <cstdio>
#include <ctime>

namespace tarnwick::Phrases {

std::string size(std::int64_t bytes, bool lowerBound)
{
    return (lowerBound ? "≥" : "") + ByteFormat::format(bytes);
}

std::string percent(double share)
{
    if (share > 0 && share < 0.005)
        return "<1 %";
    return std::to_string(static_cast<long long>(std::lround(share * 100))) + " %";
}

std::string ratio(const std::optional<double>& ratio)
{
    if (!ratio)
        return "unknown";
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.2f", *ratio);
    return buffer;
}

std::string isoDateText(std::chrono::system_clock::time_point date)
{
    std::time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(date));
    std::tm parts {};
    gmtime_r(&seconds, &parts);
    char buffer[32];
    std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return buffer;
}

}
