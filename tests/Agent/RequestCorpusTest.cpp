#include "RequestInvariants.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using namespace tarnwick;

// The inputs the request fuzz target found interesting, kept so that every build checks them.
TEST(RequestCorpus, EveryKeptInputHoldsTheInvariants)
{
    std::size_t replayed = 0;
    for (const auto& entry : std::filesystem::directory_iterator(TARNWICK_FUZZ_CORPUS "/request")) {
        std::ifstream file(entry.path(), std::ios::binary);
        std::string bytes((std::istreambuf_iterator<char>(file)), {});
        EXPECT_TRUE(RequestInvariants::hold(bytes)) << entry.path();
        ++replayed;
    }
    EXPECT_GT(replayed, 5u);
}
