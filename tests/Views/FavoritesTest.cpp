#include "Favorites.hpp"
#include "Platform/UserDefaults.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <fstream>

namespace tarnwick {
namespace {

TEST(FavoritesTest, AddsOnceInOrderRemovesAndKeepsThemInTheSettings)
{
    fixtures::TempFolder folder;
    UserDefaults defaults(folder / "defaults.json");
    Favorites favorites(defaults);
    EXPECT_TRUE(favorites.paths().empty());
    EXPECT_TRUE(favorites.add("/home/ann/Projects"));
    EXPECT_TRUE(favorites.add("/home/ann/Music/"));
    EXPECT_TRUE(favorites.add("/home/ann/Projects"));
    EXPECT_EQ(favorites.paths(), (std::vector<std::string> { "/home/ann/Projects", "/home/ann/Music" }));

    // Another process reading the same file sees them.
    UserDefaults again(folder / "defaults.json");
    EXPECT_EQ(Favorites(again).paths().size(), 2u);

    EXPECT_TRUE(favorites.remove("/home/ann/Projects"));
    EXPECT_EQ(favorites.paths(), (std::vector<std::string> { "/home/ann/Music" }));
    EXPECT_TRUE(favorites.remove("/not/there"));
    EXPECT_EQ(favorites.paths().size(), 1u);
}

TEST(FavoritesTest, RefusesRelativePathsAndSkipsWhatIsNotAPath)
{
    fixtures::TempFolder folder;
    {
        std::ofstream file(folder / "defaults.json");
        file << R"({"SidebarFavorites": ["/a", 7, null, "/b", "/a"], "Other": true})";
    }
    UserDefaults defaults(folder / "defaults.json");
    Favorites favorites(defaults);
    EXPECT_EQ(favorites.paths(), (std::vector<std::string> { "/a", "/b" }));
    EXPECT_FALSE(favorites.add("relative"));
    EXPECT_FALSE(favorites.add(""));

    std::ofstream(folder / "defaults.json") << R"({"SidebarFavorites": "not a list"})";
    EXPECT_TRUE(favorites.paths().empty());
    EXPECT_TRUE(favorites.add("/c"));
    EXPECT_EQ(favorites.paths(), (std::vector<std::string> { "/c" }));
    EXPECT_EQ(defaults.value("SidebarFavorites"), nlohmann::json::array({ "/c" }));
}

}
}
