#include "Classification/DesktopEntry.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;

TEST(DesktopEntry, ReadsOnlyTheUntranslatedKeysOfItsGroup)
{
    auto entry = DesktopEntry::parse("# a comment\n"
                                     "[Desktop Entry]\n"
                                     "Name[de]=Bildbearbeitung\n"
                                     "Name = Image\\sEditor \n"
                                     "Exec=imged %F\r\n"
                                     "StartupWMClass=ImgEd\n"
                                     "Icon=org.example.ImgEd\n"
                                     "this line is not a key\n"
                                     "Type=Application\n"
                                     "X-Flatpak=org.example.ImgEd\n"
                                     "[Desktop Action new]\n"
                                     "Name=New Window\n"
                                     "Exec=other --new\n");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->name, "Image Editor");
    EXPECT_EQ(entry->exec, "imged %F");
    EXPECT_EQ(entry->startupWMClass, "ImgEd");
    EXPECT_EQ(entry->icon, "org.example.ImgEd");
    EXPECT_EQ(entry->type, "Application");
    EXPECT_EQ(entry->flatpakID, "org.example.ImgEd");
    EXPECT_FALSE(entry->hidden);

    auto hidden = DesktopEntry::parse("[Desktop Entry]\nHidden=true\n");
    ASSERT_TRUE(hidden);
    EXPECT_TRUE(hidden->hidden);
}

TEST(DesktopEntry, RejectsWhatIsNoDesktopEntry)
{
    EXPECT_EQ(DesktopEntry::parse("").error(), DesktopEntry::Error::noDesktopEntryGroup);
    EXPECT_EQ(DesktopEntry::parse("Name=x\n[Other Group]\nExec=y\n").error(), DesktopEntry::Error::noDesktopEntryGroup);
    EXPECT_EQ(DesktopEntry::parse(std::string(DesktopEntry::maximumSize + 1, '#')).error(), DesktopEntry::Error::tooLarge);
    for (auto error : { DesktopEntry::Error::unreadable, DesktopEntry::Error::tooLarge, DesktopEntry::Error::noDesktopEntryGroup })
        EXPECT_FALSE(DesktopEntry::text(error).empty());
}

TEST(DesktopEntry, ExecArgumentsFollowTheQuotingRules)
{
    EXPECT_EQ(DesktopEntry::execArguments(R"("/opt/My App/run" --name "say \"hi\"" %U)"),
        (std::vector<std::string> { "/opt/My App/run", "--name", "say \"hi\"", "%U" }));
    EXPECT_EQ(DesktopEntry::execArguments("  a   b "), (std::vector<std::string> { "a", "b" }));
    EXPECT_EQ(DesktopEntry::execArguments(R"(a "" b)"), (std::vector<std::string> { "a", "", "b" }));
    EXPECT_TRUE(DesktopEntry::execArguments("").empty());
}

TEST(DesktopEntry, ProgramNameLooksThroughWrappersAndInterpreters)
{
    struct Case {
        const char* exec;
        const char* tryExec;
        const char* program;
    };
    const Case cases[] = {
        { "vim %F", "", "vim" },
        { "/usr/bin/python3.11", "", "python3.11" },
        { "env BAMF_DESKTOP_FILE_HINT=/x.desktop /snap/bin/firefox %u", "", "firefox" },
        { "env -u FOO GDK_BACKEND=x11 /usr/lib/slack/slack --start", "", "slack" },
        { "/usr/bin/flatpak run --branch=stable --arch=x86_64 --command=gimp-2.10 --file-forwarding org.gimp.GIMP @@ %F @@", "",
            "gimp-2.10" },
        { "flatpak run org.example.App", "", "" },
        { "snap run spotify %U", "", "spotify" },
        { "sh -c \"cd /opt/thing && ./thing\"", "", "" },
        { "xdg-open https://example.org", "", "" },
        { "python3 /opt/tool/tool.py %f", "", "tool" },
        { "java -jar /opt/ide/ide.jar", "", "ide" },
        { "python3", "", "python3" },
        { "pkexec /usr/sbin/gparted %f", "", "gparted" },
        { "\"/opt/My App/myapp\" %U", "", "myapp" },
        { "", "/usr/bin/editor", "editor" },
        { "", "", "" },
        { "env", "", "" },
    };
    for (const Case& c : cases) {
        DesktopEntry entry;
        entry.exec = c.exec;
        entry.tryExec = c.tryExec;
        EXPECT_EQ(entry.programName(), c.program) << c.exec;
    }
}
