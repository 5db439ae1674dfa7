#include "History/HistoryTestSupport.hpp"
#include "History/VolumeMeasurement.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;
using fixtures::utc;

TEST(VolumeMeasurement, LogLinesRoundTrip)
{
    const VolumeMeasurement cases[] = {
        { utc(2025, 3, 10, 9), 994'662'584'320, 412'004'487'168, 87'000'000'000 },
        { utc(2025, 3, 10, 9) + std::chrono::microseconds(250'000), 1, 0, std::nullopt },
        { utc(2000, 12, 31, 23, 59, 59) + std::chrono::microseconds(500'000), 5, 4, 0 }, // before 2001
        { utc(2001, 1, 1), INT64_MAX, INT64_MAX, INT64_MAX },
    };
    const char* lines[] = {
        "763290000 994662584320 412004487168 87000000000\n",
        "763290000.25 1 0\n",
        "-0.5 5 4 0\n",
        "0 9223372036854775807 9223372036854775807 9223372036854775807\n",
    };
    for (std::size_t k = 0; k < std::size(cases); ++k) {
        EXPECT_EQ(cases[k].logLine(), lines[k]);
        EXPECT_EQ(VolumeMeasurement::parseLogLine(lines[k]), cases[k]) << lines[k];
    }
}

TEST(VolumeMeasurement, BadLinesAreSkipped)
{
    const char* bad[] = {
        "", "763290000 1", "763290000 1 2 3 4", "x 1 2", "763290000 1 -2", "763290000 -1 2", "763290000. 1 2",
        "763290000.1234567 1 2", "763290000.-5 1 2", "763290000 1 2 x", "763290000  1 2", "1e9 1 2", "99999999999 1 2",
        "763290000 99999999999999999999 2",
    };
    for (const char* line : bad)
        EXPECT_FALSE(VolumeMeasurement::parseLogLine(line)) << line;

    auto log = VolumeMeasurement::parseLog("10 3 2\ngarbage\n\n20 3 1 7\n30 3");
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[0].available, 2);
    EXPECT_EQ(log[1].scanned, 7);
}

TEST(VolumeMeasurement, LogFileNames)
{
    EXPECT_EQ(VolumeMeasurement::logFileName("3C1E-77AA"), "3C1E-77AA.log");
    EXPECT_EQ(VolumeMeasurement::logFileName("dev:8:3"), "dev_8_3.log");
    EXPECT_EQ(VolumeMeasurement::logFileName("a/b:c//d"), "a_b_c__d.log");
}
