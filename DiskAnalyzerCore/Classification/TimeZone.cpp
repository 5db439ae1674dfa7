#include "Classification/TimeZone.hpp"

#include <ctime>

namespace tarnwick {

namespace {

class SystemTimeZone final : public TimeZone {
public:
    [[nodiscard]] std::int64_t offsetFromGMT(std::int64_t unixSeconds) const override
    {
        auto time = static_cast<std::time_t>(unixSeconds);
        std::tm local {};
        if (!localtime_r(&time, &local))
            return 0;
        return local.tm_gmtoff;
    }
};

}

const TimeZone& TimeZone::system()
{
    static const SystemTimeZone zone;
    return zone;
}

}
