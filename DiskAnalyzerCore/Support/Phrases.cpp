#include "Support/Phrases.hpp"

#include "Support/ByteFormat.hpp"

#include <climits>
#include <cmath>
#include <cstdio>
#include <ctime>

namespace tarnwick::Phrases {

namespace {

std::string dateText(std::chrono::system_clock::time_point date, const char* format, bool local)
{
    std::time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(date));
    std::tm parts {};
    if (local)
        localtime_r(&seconds, &parts);
    else
        gmtime_r(&seconds, &parts);
    char buffer[40];
    std::strftime(buffer, sizeof buffer, format, &parts);
    return buffer;
}

}

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
    return dateText(date, "%Y-%m-%dT%H:%M:%SZ", false);
}

std::string signedSize(std::int64_t change, bool uncertain)
{
    std::string sign = change < 0 ? "-" : "+";
    std::int64_t magnitude = change < 0 ? (change == INT64_MIN ? INT64_MAX : -change) : change;
    return (uncertain ? "≈" : "") + sign + ByteFormat::format(magnitude);
}

std::string localTime(std::chrono::system_clock::time_point date)
{
    return dateText(date, "%Y-%m-%d %H:%M", true);
}

std::string localDay(std::chrono::system_clock::time_point date)
{
    return dateText(date, "%Y-%m-%d", true);
}

}
