#include "Platform/LoginItem.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>


using namespace tarnwick;

TEST(LoginItem, ExecArgumentsAreQuotedAsDesktopEntriesWantThem)
{
    struct Case {
        std::string argument;
        std::string quoted;
    };
    const Case cases[] {
        { "/usr/bin/tarnwick", "/usr/bin/tarnwick" },
        { "/home/ann/My Apps/tarnwick", "\"/home/ann/My Apps/tarnwick\"" },
        // A quote, a dollar and a backquote get one escaping backslash, doubled by the string rule.
        { "/a\"b", "\"/a\\\\\"b\"" },
        { "/a$b", "\"/a\\\\$b\"" },
        { "/a`b", "\"/a\\\\`b\"" },
        // A backslash takes four.
        { "/a\\b", "\"/a\\\\\\\\b\"" },
        // A per cent sign would start a field code.
        { "/a%b", "\"/a%%b\"" },
        { "", "\"\"" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(LoginItem::quotedArgument(c.argument), c.quoted) << c.argument;
}

TEST(LoginItem, InstallsAndRemovesTheAutostartEntry)
{
    fixtures::TempFolder folder;
    std::string path = folder / "config/autostart/tarnwick.desktop";
    EXPECT_FALSE(LoginItem::isInstalled(path));
    EXPECT_TRUE(LoginItem::remove(path)); // nothing there is fine
    ASSERT_TRUE(LoginItem::install(path, "/opt/Tarnwick Apps/tarnwick"));
    EXPECT_TRUE(LoginItem::isInstalled(path));
    std::string text = fixtures::readFile(path);
    EXPECT_EQ(text, LoginItem::entryText("/opt/Tarnwick Apps/tarnwick"));
    EXPECT_NE(text.find("\nExec=\"/opt/Tarnwick Apps/tarnwick\" --background\n"), std::string::npos);
    EXPECT_TRUE(text.starts_with("[Desktop Entry]\nType=Application\n"));
    ASSERT_TRUE(LoginItem::remove(path));
    EXPECT_FALSE(LoginItem::isInstalled(path));
}
