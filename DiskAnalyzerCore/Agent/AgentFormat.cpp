#include "Agent/AgentFormat.hpp"

#include "Agent/AgentResult.hpp"
#include "Agent/ByteFormat.hpp"

#include <cmath>
#include <ctime>

namespace tarnwick::AgentFormat {

std::string isoDateText(Date date)
{
    std::time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(date));
    std::tm parts {};
    gmtime_r(&seconds, &parts);
    char buffer[32];
    std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return buffer;
}

JSONValue isoDate(std::optional<Date> date)
{
    if (!date)
        return JSONValue();
    return JSONValue(isoDateText(*date));
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

std::optional<AgentResult> largestFitting(int count, const std::function<AgentResult(int shown)>& make)
{
    AgentResult all = make(count);
    if (all.fits())
        return all;
    // Binary search for the largest n whose answer fits; fewer items never make it longer.
    int low = 0;
    int high = count - 1;
    std::optional<AgentResult> best;
    while (low <= high) {
        int middle = (low + high) / 2;
        AgentResult candidate = make(middle);
        if (candidate.fits()) {
            best = std::move(candidate);
            low = middle + 1;
        } else {
            high = middle - 1;
        }
    }
    return best;
}

}
