#include "Platform/LoginItem.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

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
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    EXPECT_EQ(text.str(), LoginItem::entryText("/opt/Tarnwick Apps/tarnwick"));
    EXPECT_NE(text.str().find("\nExec=\"/opt/Tarnwick Apps/tarnwick\" --background\n"), std::string::npos);
    EXPECT_TRUE(text.str().starts_with("[Desktop Entry]\nType=Application\n"));
    ASSERT_TRUE(LoginItem::remove(path));
    EXPECT_FALSE(LoginItem::isInstalled(path));
}

TEST(LoginItem, StandardPathFollowsTheConfigurationHome)
{
    const char* old = std::getenv("XDG_CONFIG_HOME");
    std::string saved = old ? old : "";
    ::setenv("XDG_CONFIG_HOME", "/tmp/somewhere/config", 1);
    EXPECT_EQ(LoginItem::standardPath(), "/tmp/somewhere/config/autostart/tarnwick.desktop");
    if (old)
        ::setenv("XDG_CONFIG_HOME", saved.c_str(), 1);
    else
        ::unsetenv("XDG_CONFIG_HOME");
}
