#include "Classification/OwnerIndex.hpp"
#include "Platform/LocalFiles.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sys/stat.h>

using namespace tarnwick;
using tarnwick::fixtures::TempFolder;

namespace {

void writeText(const std::string& path, std::string_view text)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << text;
}

std::string desktopFile(std::string_view name, std::string_view exec, std::string_view extra = "")
{
    return "[Desktop Entry]\nType=Application\nName=" + std::string(name) + "\nExec=" + std::string(exec) + "\n" + std::string(extra);
}

DesktopEntry application(std::string name, std::string exec)
{
    DesktopEntry entry;
    entry.type = "Application";
    entry.name = std::move(name);
    entry.exec = std::move(exec);
    return entry;
}

const OwnerIndex::App* appNamed(const OwnerIndex& index, std::string_view id)
{
    auto app = index.findID(id);
    return app ? &index.apps()[static_cast<std::size_t>(*app)] : nullptr;
}

// A home and a system folder with desktop entries, Flatpaks and snaps of every kind the
// index reads.
struct FakeMachine {
    TempFolder folder;
    std::string home = folder / "home/alice";
    std::string system = folder / "system";

    FakeMachine()
    {
        const std::string userApps = home + "/.local/share/applications/";
        const std::string systemApps = system + "/usr/share/applications/";
        writeText(systemApps + "org.example.Editor.desktop", desktopFile("Editor", "editor %F", "StartupWMClass=EditorWindow\n"));
        // The user's own entry of the same id wins over the system's.
        writeText(systemApps + "viewer.desktop", desktopFile("System Viewer", "viewer"));
        writeText(userApps + "viewer.desktop", desktopFile("My Viewer", "myviewer"));
        // A hidden entry in the user's folder removes the system's.
        writeText(systemApps + "removed.desktop", desktopFile("Removed", "removed"));
        writeText(userApps + "removed.desktop", "[Desktop Entry]\nHidden=true\n");
        writeText(systemApps + "kde/games.desktop", desktopFile("Games", "kgames"));
        writeText(systemApps + "website.desktop", "[Desktop Entry]\nType=Link\nName=Web\nURL=https://example.org\n");
        writeText(systemApps + "broken.desktop", "Name=No group\n");
        writeText(systemApps + "README", "not an entry");
        // Reading a pipe would wait for a writer forever.
        mkfifo((systemApps + "pipe.desktop").c_str(), 0644);
        writeText(systemApps + "zoom.desktop", desktopFile("Zoom Meetings", "/opt/zoom/ZoomLauncher %U"));
        // A Flatpak installation with its exported entry, and an uninstalled app's data.
        std::filesystem::create_directories(system + "/var/lib/flatpak/app/org.example.Paint/current");
        writeText(system + "/var/lib/flatpak/exports/share/applications/org.example.Paint.desktop",
            desktopFile("Paint", "/usr/bin/flatpak run --command=paint org.example.Paint", "X-Flatpak=org.example.Paint\n"));
        std::filesystem::create_directories(home + "/.var/app/org.example.Gone/config");
        // Snaps: an app with its entry, a base snap, and data of a snap run by the user.
        for (std::string_view snap : { "firefox/4173", "core22/1122", "gnome-42-2204/176", "gnome-calculator/9" })
            std::filesystem::create_directories(system + "/snap/" + std::string(snap));
        writeText(system + "/var/lib/snapd/desktop/applications/firefox_firefox.desktop",
            desktopFile("Firefox", "env BAMF_DESKTOP_FILE_HINT=x /snap/bin/firefox %u", "X-SnapInstanceName=firefox\n"));
        std::filesystem::create_directories(home + "/snap/firefox/common");
        writeText(system + "/etc/os-release", "NAME=\"Example OS\"\nPRETTY_NAME=\"Example OS 7 (Quiet)\"\nID=example\n");
    }
    [[nodiscard]] OwnerIndex index() const { return OwnerIndex::build(ApplicationRoots::under(home, system)); }
};

}

TEST(OwnerIndex, FoldsNamesToLettersAndDigits)
{
    struct Case {
        std::string_view name;
        std::string_view folded;
    };
    const Case cases[] = {
        { "Visual Studio Code", "visualstudiocode" },
        { ".visual-studio_code", "visualstudiocode" },
        { "org.gnome.Nautilus", "orggnomenautilus" },
        { "Python3.11", "python311" },
        { "Éditeur", "\xC3\x89" "diteur" },
        { "...", "" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(OwnerIndex::fold(c.name), c.folded) << c.name;
}

TEST(OwnerIndex, SystemNameFromTheReleaseFile)
{
    EXPECT_EQ(OwnerIndex::systemNameFromOSRelease("NAME=\"Debian GNU/Linux\"\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n"),
        "Debian GNU/Linux 12 (bookworm)");
    EXPECT_EQ(OwnerIndex::systemNameFromOSRelease("ID=arch\nNAME='Arch Linux'\n"), "Arch Linux");
    EXPECT_EQ(OwnerIndex::systemNameFromOSRelease("PRETTY_NAME=\"\"\nNAME=Plain\n"), "Plain");
    EXPECT_EQ(OwnerIndex::systemNameFromOSRelease("PRETTY_NAME=\"Say \\\"hi\\\"\"\n"), "Say \"hi\"");
    EXPECT_EQ(OwnerIndex::systemNameFromOSRelease("ID=none\n"), std::nullopt);
    EXPECT_EQ(OwnerIndex::systemNameFromOSRelease(""), std::nullopt);
}

TEST(OwnerIndex, PlatformSnapsAreNoApps)
{
    for (std::string_view name : { "core", "core18", "core24", "snapd", "bare", "gnome-3-38-2004", "gnome-42-2204", "mesa-2404",
             "kf5-5-110-qt-5-15-11-core22", "kde-frameworks-5-qt-5-15-core20", "gtk-common-themes" })
        EXPECT_TRUE(OwnerIndex::isPlatformSnap(name)) << name;
    for (std::string_view name : { "corectrl", "gnome-calculator", "firefox", "snap-store", "mesa" })
        EXPECT_FALSE(OwnerIndex::isPlatformSnap(name)) << name;
}

TEST(OwnerIndex, ReadsDesktopEntriesInTheirPrecedence)
{
    FakeMachine machine;
    OwnerIndex index = machine.index();
    ASSERT_NE(appNamed(index, "org.example.Editor"), nullptr);
    EXPECT_EQ(appNamed(index, "org.example.Editor")->displayName, "Editor");
    ASSERT_NE(appNamed(index, "viewer"), nullptr);
    EXPECT_EQ(appNamed(index, "viewer")->displayName, "My Viewer");
    EXPECT_EQ(appNamed(index, "removed"), nullptr);
    EXPECT_EQ(appNamed(index, "website"), nullptr);
    // Entries in subfolders have ids with the folder as a prefix.
    ASSERT_NE(appNamed(index, "kde-games"), nullptr);
    ASSERT_EQ(index.skipped().size(), 2u);
    EXPECT_TRUE(index.skipped()[0].path.ends_with("broken.desktop"));
    EXPECT_EQ(index.skipped()[0].error, DesktopEntry::Error::noDesktopEntryGroup);
    EXPECT_TRUE(index.skipped()[1].path.ends_with("pipe.desktop"));
    EXPECT_EQ(index.skipped()[1].error, DesktopEntry::Error::unreadable);
    EXPECT_EQ(index.systemName(), "Example OS 7 (Quiet)");
    // A program in /opt makes its folder there the app's place.
    EXPECT_EQ(appNamed(index, "zoom")->paths, (std::vector<std::string> { "/opt/zoom" }));
}

TEST(OwnerIndex, FlatpaksAndSnapsJoinTheirEntries)
{
    FakeMachine machine;
    OwnerIndex index = machine.index();
    const OwnerIndex::App* paint = appNamed(index, "org.example.Paint");
    ASSERT_NE(paint, nullptr);
    EXPECT_EQ(paint->displayName, "Paint");
    EXPECT_EQ(index.find("paint"), index.findID("org.example.Paint"));
    // Data of an app no longer installed still names it.
    ASSERT_NE(appNamed(index, "org.example.Gone"), nullptr);
    // The snap and its entry are one app, under the snap's name.
    const OwnerIndex::App* firefox = appNamed(index, "firefox");
    ASSERT_NE(firefox, nullptr);
    EXPECT_EQ(firefox->displayName, "Firefox");
    EXPECT_EQ(index.findID("firefox_firefox"), index.findID("firefox"));
    EXPECT_EQ(index.find("mozilla"), index.findID("firefox"));
    EXPECT_NE(appNamed(index, "gnome-calculator"), nullptr);
    EXPECT_EQ(appNamed(index, "core22"), nullptr);
    EXPECT_EQ(appNamed(index, "gnome-42-2204"), nullptr);
}

TEST(OwnerIndex, FindsFolderNamesByEveryNameOfAnApp)
{
    FakeMachine machine;
    OwnerIndex index = machine.index();
    const auto editor = index.findID("org.example.Editor");
    ASSERT_TRUE(editor);
    for (std::string_view name : { "org.example.Editor", "Editor", "editor", "EditorWindow", ".editor", "ORG.EXAMPLE.EDITOR" })
        EXPECT_EQ(index.find(name), editor) << name;
    EXPECT_EQ(index.find("myviewer"), index.findID("viewer"));
    EXPECT_EQ(index.find("systemviewer"), std::nullopt);
    EXPECT_EQ(index.find("removed"), std::nullopt);
    // Folders every desktop shares belong to no app, whatever an app calls itself.
    EXPECT_EQ(index.find("applications"), std::nullopt);
    EXPECT_EQ(index.find(""), std::nullopt);
}

TEST(OwnerIndex, StrongerNamesWinOverWeakerOnes)
{
    OwnerIndex index;
    index.addDesktopEntry("org.example.Writer", application("Notes", "jot"));
    index.addDesktopEntry("org.example.Notes", application("Jotter", "notes"));
    // "notes" is the first app's display name but the second's program and last id component.
    EXPECT_EQ(index.find("notes"), index.findID("org.example.Notes"));
    // Of equal claims the first stays.
    index.addDesktopEntry("com.other.Scribble", application("Scribble", "jot"));
    EXPECT_EQ(index.find("jot"), index.findID("org.example.Writer"));
}

TEST(OwnerIndex, AgentsGetTheirPlaces)
{
    OwnerIndex index;
    index.addDesktopEntry("cursor", application("Cursor", "/usr/share/cursor/cursor %F"));
    index.addAgentPlaces();
    const OwnerIndex::App* claude = appNamed(index, "agent:claude-code");
    ASSERT_NE(claude, nullptr);
    EXPECT_EQ(claude->displayName, "Claude Code");
    EXPECT_EQ(claude->homePaths, (std::vector<std::string> { ".claude", ".local/share/claude" }));
    // On Linux, what a Mac keeps in Application Support lives in ~/.config.
    const OwnerIndex::App* desktop = appNamed(index, "agent:claude-desktop");
    ASSERT_NE(desktop, nullptr);
    EXPECT_EQ(desktop->homePaths, (std::vector<std::string> { "Library/Application Support/Claude", ".config/Claude" }));
    // An agent that is also an installed app keeps the app as its owner.
    EXPECT_EQ(index.findID("agent:cursor"), index.findID("cursor"));
    const auto& cursorPlaces = appNamed(index, "cursor")->homePaths;
    EXPECT_NE(std::find(cursorPlaces.begin(), cursorPlaces.end(), ".cursor"), cursorPlaces.end());
}

TEST(OwnerIndex, FindsThisMachinesDesktopEntries)
{
    OwnerIndex index = OwnerIndex::build(ApplicationRoots::current());
    auto listed = LocalFiles::list("/usr/share/applications");
    if (!listed)
        GTEST_SKIP() << "no /usr/share/applications here";
    int checked = 0;
    for (const LocalFiles::Entry& file : *listed) {
        if (file.isFolder || !file.name.ends_with(".desktop"))
            continue;
        auto text = LocalFiles::read("/usr/share/applications/" + file.name, DesktopEntry::maximumSize);
        ASSERT_TRUE(text) << file.name;
        auto entry = DesktopEntry::parse(*text);
        if (!entry || entry->type != "Application" || entry->hidden)
            continue;
        std::string id = file.name.substr(0, file.name.size() - 8);
        EXPECT_TRUE(index.findID(id)) << id;
        ++checked;
    }
    EXPECT_GT(checked, 0);
    EXPECT_NE(index.systemName(), "");
}
