#include "History/LocalDays.hpp"

#include "History/Snapshot.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;

namespace {

// Offsets that change twice a year at fixed instants, as daylight saving time does.
class TwoTransitionZone final : public TimeZone {
public:
    TwoTransitionZone(std::int64_t springUnix, std::int64_t autumnUnix)
        : m_spring(springUnix)
        , m_autumn(autumnUnix)
    {
    }
    [[nodiscard]] std::int64_t offsetFromGMT(std::int64_t unixSeconds) const override
    {
        ++asked;
        return unixSeconds >= m_spring && unixSeconds < m_autumn ? 7200 : 3600;
    }
    mutable int asked = 0;

private:
    std::int64_t m_spring, m_autumn;
};

constexpr std::int64_t reference = TreeDate::referenceUnixSeconds;

}

TEST(LocalDays, DaysCountInTheZonesOwnTime)
{
    // 2024-03-31 01:00 UTC the offset goes from +1 to +2 hours; back on 2024-10-27 01:00 UTC.
    const std::int64_t spring = 1'711'846'800, autumn = 1'729'990'800;
    TwoTransitionZone zone(spring, autumn);
    LocalDays days(zone);
    struct Case {
        const char* what;
        std::int64_t unixSeconds;
        std::int32_t day; // days since 2001-01-01 in local time
    };
    const Case cases[] = {
        { "2001-01-01 00:00 local", reference - 3600, 0 },
        { "2000-12-31 23:59 local", reference - 3601, -1 },
        { "just before the spring change, 01:59 local", spring - 1, 8490 },
        { "at the spring change, 03:00 local", spring, 8490 },
        { "22:30 UTC in summer is the next local day", spring + 21 * 3600 + 1800, 8491 },
        { "22:30 UTC after the autumn change is still the same local day", autumn + 21 * 3600 + 1800, 8700 },
    };
    for (const Case& c : cases) {
        auto stored = static_cast<std::int32_t>(c.unixSeconds - reference);
        EXPECT_EQ(days.day(stored), c.day) << c.what;
        EXPECT_EQ(LocalDays::dayOf(Date(std::chrono::seconds(c.unixSeconds)), zone), c.day) << c.what;
    }
    EXPECT_EQ(days.day(TreeDate::noDate), Snapshot::unknownDay);
}

TEST(LocalDays, AsksTheZoneOncePerDayOnly)
{
    TwoTransitionZone zone(0, 1);
    LocalDays days(zone);
    const std::int32_t noon = 8000 * 86400 + 43200;
    for (int i = 0; i < 1000; ++i)
        days.day(noon + i);
    EXPECT_LE(zone.asked, 2);
}
