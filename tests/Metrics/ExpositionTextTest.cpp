#include "Metrics/ExpositionText.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;

TEST(ExpositionText, LabelValuesAreUTF8AndNameOnePathEach)
{
    struct Case {
        std::string_view text;
        std::string_view label;
    };
    const Case cases[] {
        { "/home/ann/Projects", "/home/ann/Projects" },
        { "/srv/Fotos 2024/Tränen ☂", "/srv/Fotos 2024/Tränen ☂" },
        // The format's own escapes come when rendering.
        { "/a \"b\"\nd", "/a \"b\"\nd" },
        // Not UTF-8: each stray byte as \xHH; with that form in use, a backslash is doubled,
        // so that a name really holding the text "\xff" stays another label.
        { "/a\xff", "/a\\xff" },
        { "/a\\xff", "/a\\\\xff" },
        { "/a\\xff\xfe", "/a\\\\xff\\xfe" },
        { "C:\\dos", "C:\\\\dos" },
        // A character cut short, an overlong form and a surrogate are not UTF-8 either.
        { "/a\xe2\x82", "/a\\xe2\\x82" },
        { "/\xc0\xaf", "/\\xc0\\xaf" },
        { "/\xed\xa0\x80", "/\\xed\\xa0\\x80" },
        // Control characters other than the line feed would reach a terminal that prints the
        // metrics as they are: written as bytes too.
        { "/a\x1b[31mred", "/a\\x1b[31mred" },
        { "/a\tb\rc\x7f", "/a\\x09b\\x0dc\\x7f" },
        { "/a\x1b\\", "/a\\x1b\\\\" },
        { "", "" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(ExpositionText::labelValue(c.text), c.label) << c.text;
}

TEST(ExpositionText, RendersHelpTypeAndEscapedSamples)
{
    const std::vector<MetricFamily> families {
        { "tarnwick_place_size_bytes", "Size\\on disk\nof a place.", MetricFamily::Type::gauge,
            {
                { { { "path", "/a \"b\"\\c\nd" }, { "volume", "v" } }, 52'000'000'000 },
                { { { "path", "/x\xff" }, { "volume", "v" } }, -3 },
            } },
        { "tarnwick_alert_exceeded", "1 when exceeded.", MetricFamily::Type::gauge, { { {}, 1 } } },
    };
    EXPECT_EQ(ExpositionText::render(families),
        "# HELP tarnwick_place_size_bytes Size\\\\on disk\\nof a place.\n"
        "# TYPE tarnwick_place_size_bytes gauge\n"
        "tarnwick_place_size_bytes{path=\"/a \\\"b\\\"\\\\\\\\c\\nd\",volume=\"v\"} 52000000000\n"
        "tarnwick_place_size_bytes{path=\"/x\\\\xff\",volume=\"v\"} -3\n"
        "# HELP tarnwick_alert_exceeded 1 when exceeded.\n"
        "# TYPE tarnwick_alert_exceeded gauge\n"
        "tarnwick_alert_exceeded 1\n");
}

TEST(ExpositionText, ASeriesThatReadsTheSameAsAnEarlierOneIsLeftOut)
{
    // "/a" with the byte 0xff and a path that is the text "/a\xff" get different labels, so
    // only the true repeat is left out.
    const std::vector<MetricFamily> families { { "tarnwick_x_bytes", "x", MetricFamily::Type::gauge,
        { { { { "path", "/a\xff" } }, 1 }, { { { "path", "/a\\xff" } }, 2 }, { { { "path", "/a\xff" } }, 3 } } } };
    std::string text = ExpositionText::render(families);
    EXPECT_NE(text.find("{path=\"/a\\\\xff\"} 1\n"), std::string::npos) << text;
    EXPECT_NE(text.find("{path=\"/a\\\\\\\\xff\"} 2\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("} 3\n"), std::string::npos) << text;
}
