#include "Support/ByteFormat.hpp"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>

using namespace tarnwick;

TEST(ByteFormat, DecimalUnitsWithThreeSignificantDigits)
{
    struct Case {
        std::int64_t bytes;
        std::string_view text;
    };
    const Case cases[] {
        { 0, "0 B" },
        { 999, "999 B" },
        { 1'000, "1.00 KB" },
        { 1'004, "1.00 KB" },
        { 1'005, "1.01 KB" },       // half rounds up
        { 9'994, "9.99 KB" },
        { 9'995, "10.0 KB" },       // carries into a fourth digit: one decimal fewer
        { 99'949, "99.9 KB" },
        { 99'950, "100 KB" },
        { 999'499, "999 KB" },
        { 999'500, "1.00 MB" },     // no decimal left to drop: the next unit
        { 1'000'000, "1.00 MB" },
        { 1'234'567'890, "1.23 GB" },
        { 999'999'999'999, "1.00 TB" },
        { 1'500'000'000'000'000, "1.50 PB" },
        { 999'500'000'000'000'000, "1.00 EB" },
        { 1'000'000'000'000'000'000, "1.00 EB" },
        { std::numeric_limits<std::int64_t>::max(), "9.22 EB" },
        { -1, "0 B" },
        { std::numeric_limits<std::int64_t>::min(), "0 B" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(ByteFormat::format(c.bytes, "."), c.text) << c.bytes;
}

TEST(ByteFormat, LocaleDecimalSeparator)
{
    EXPECT_EQ(ByteFormat::format(1'234'567'890, ","), "1,23 GB");
    EXPECT_EQ(ByteFormat::format(10'050, ","), "10,1 KB");
    EXPECT_EQ(ByteFormat::format(123'000, ","), "123 KB");
    // The C locale, which a program starts in, separates with ".".
    std::setlocale(LC_NUMERIC, "C");
    EXPECT_EQ(ByteFormat::decimalSeparator(), ".");
    EXPECT_EQ(ByteFormat::format(1'500), "1.50 KB");
}
