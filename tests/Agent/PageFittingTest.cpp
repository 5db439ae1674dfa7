#include "Agent/PageFitting.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;

namespace {

// An answer whose text grows by groupBytes per group and placeBytes per place of each group.
struct SizedPage {
    int header = 100;
    int groupBytes = 0;
    int placeBytes = 0;
    int* calls = nullptr;

    AgentResult operator()(int groups, int places) const
    {
        if (calls)
            ++*calls;
        return AgentResult::success(std::string(static_cast<std::size_t>(header + groups * (groupBytes + places * placeBytes)), 'x'));
    }
};

}

TEST(PageFitting, KeepsEveryGroupAndPlaceWhenTheyFit)
{
    auto fitted = PageFitting::fit(20, 5, SizedPage { 100, 50, 20 });
    ASSERT_TRUE(fitted.has_value());
    EXPECT_EQ(fitted->groups, 20);
    EXPECT_EQ(fitted->places, 5);
    EXPECT_EQ(fitted->result.text.size(), 100u + 20u * 150u);
}

TEST(PageFitting, ShrinksGroupsBeforePlacesAndNeverBelowOneGroup)
{
    // 1,000 bytes a group: 8 groups (8,100 bytes) fit below 8,192, 9 do not.
    const struct {
        int groups, places, groupBytes, placeBytes;
        int expectedGroups, expectedPlaces;
    } cases[] = {
        { 20, 5, 500, 100, 8, 5 },    // groups shrink, places stay
        { 100, 0, 81, 0, 99, 0 },     // 100 groups would make 8,200 bytes, 99 make 8,119
        { 3, 10, 100, 1000, 1, 7 },   // one group with 10 places is 10,200 bytes, with 8 still 8,200
        { 5, 10, 8000, 1, 1, 10 },    // one group alone just fits with its places (8,110 bytes)
        { 1, 0, 8092, 0, 0, 0 },      // one group without places is 8,192 bytes: nothing fits
    };
    for (const auto& test : cases) {
        auto fitted = PageFitting::fit(test.groups, test.places, SizedPage { 100, test.groupBytes, test.placeBytes });
        if (test.expectedGroups == 0) {
            EXPECT_FALSE(fitted.has_value()) << test.groupBytes;
            continue;
        }
        ASSERT_TRUE(fitted.has_value()) << test.groupBytes;
        EXPECT_EQ(fitted->groups, test.expectedGroups) << test.groupBytes;
        EXPECT_EQ(fitted->places, test.expectedPlaces) << test.groupBytes;
        EXPECT_TRUE(fitted->result.fits());
        if (fitted->groups < test.groups) {
            SizedPage page { 100, test.groupBytes, test.placeBytes };
            EXPECT_FALSE(page(fitted->groups + 1, fitted->places).fits()) << test.groupBytes;
        }
    }
}

TEST(PageFitting, APagePastTheLastGroupIsMadeOnce)
{
    int calls = 0;
    auto fitted = PageFitting::fit(0, 5, SizedPage { 100, 500, 100, &calls });
    ASSERT_TRUE(fitted.has_value());
    EXPECT_EQ(fitted->groups, 0);
    EXPECT_EQ(fitted->places, 5);
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(PageFitting::fit(0, 5, SizedPage { 9000, 0, 0 }).has_value());
}

TEST(PageFitting, TheJSONRenderingCountsToo)
{
    auto make = [](int groups, int) {
        JSONValue::Array list(static_cast<std::size_t>(groups), JSONValue(std::string(900, 'g')));
        return AgentResult::success("short", JSONValue(JSONValue::Object { { "groups", list } }));
    };
    auto fitted = PageFitting::fit(30, 0, make);
    ASSERT_TRUE(fitted.has_value());
    EXPECT_LT(fitted->groups, 10);
    EXPECT_GT(fitted->groups, 5);
    EXPECT_TRUE(fitted->result.fits());
}
