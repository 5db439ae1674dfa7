#pragma once

#include "History/Calendar.hpp"
#include "Support/ScopedEnvironment.hpp"

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace tarnwick::fixtures {

// An instant given in UTC.
inline Date utc(int year, unsigned month, unsigned day, int hour = 0, int minute = 0, int second = 0)
{
    using namespace std::chrono;
    sys_days date { std::chrono::year { year } / std::chrono::month { month } / std::chrono::day { day } };
    return Date(date) + hours(hour) + minutes(minute) + seconds(second);
}

// Sets the process's TZ for one test, so that the system calendar follows a real zone's
// daylight-saving rules, and puts the old value back afterwards.
class ScopedTimeZone {
public:
    explicit ScopedTimeZone(const char* zone)
        : m_environment { { "TZ", zone } }
    {
        ::tzset();
    }

private:
    // Declared first, so destroyed last: once the old TZ is back.
    struct ReadAgain {
        ~ReadAgain() { ::tzset(); }
    } m_readAgain;
    ScopedEnvironment m_environment;
};

}
