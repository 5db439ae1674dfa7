#include "Classification/OwnerPlaces.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;

namespace {

DesktopEntry application(std::string_view name, std::string_view exec)
{
    DesktopEntry entry;
    entry.type = "Application";
    entry.name = name;
    entry.exec = exec;
    return entry;
}

// The index of a machine whose user is alice, with the system's installations at their
// usual places.
OwnerIndex sampleIndex(const std::string& home = "/home/alice")
{
    OwnerIndex index(ApplicationRoots::under(home, ""));
    index.addDesktopEntry("foo", application("Foo", "foo %U"));
    index.addDesktopEntry("code", application("Visual Studio Code", "/usr/share/code/code %F"));
    index.addDesktopEntry("google-chrome", application("Google Chrome", "/opt/google/chrome/google-chrome %U"));
    index.addFlatpak("org.example.App");
    index.addSnap("spotify");
    index.addAgentPlaces();
    index.addAliases();
    return index;
}

std::string keyOf(const OwnerIndex& index, OwnerPlaces::Owner owner)
{
    if (owner == OwnerPlaces::system)
        return "system";
    if (owner == OwnerPlaces::noOwner)
        return "none";
    return index.apps()[static_cast<std::size_t>(owner)].id;
}

struct Case {
    std::string_view path;
    std::string_view owner;
};

void expectOwners(const OwnerIndex& index, std::initializer_list<Case> cases)
{
    OwnerPlaces places(index);
    for (const Case& c : cases)
        EXPECT_EQ(keyOf(index, places.ownerOf(c.path)), c.owner) << c.path;
}

}

TEST(OwnerPlaces, TheSystemsOwnFolders)
{
    OwnerIndex index = sampleIndex();
    expectOwners(index, {
        { "/", "none" },
        { "/usr", "system" },
        { "/usr/share/code/code", "system" },
        { "/boot/vmlinuz-6.1", "system" },
        { "/etc/fstab", "system" },
        { "/lib64", "system" },
        { "/swapfile", "system" },
        { "/var", "none" },
        { "/var/lib/dpkg", "system" },
        { "/var/cache/apt/archives", "system" },
        { "/var/log/syslog", "system" },
        { "/var/tmp/scratch", "none" },
        { "/var/mail/alice", "none" },
        { "/tmp", "none" },
        { "/srv/data", "none" },
        { "/mnt/usr", "none" },
    });
}

TEST(OwnerPlaces, InstalledApplicationsOutsideHome)
{
    OwnerIndex index = sampleIndex();
    expectOwners(index, {
        { "/var/lib/flatpak/app/org.example.App/current", "org.example.App" },
        { "/var/lib/flatpak/app/org.unknown.Thing", "system" },
        { "/var/lib/flatpak/runtime/org.gnome.Platform", "system" },
        { "/snap/spotify/72", "spotify" },
        { "/snap/core22/1122", "system" },
        { "/snap", "none" },
        { "/var/lib/snapd/snaps/spotify_72.snap", "spotify" },
        { "/var/lib/snapd/snaps/core22_1122.snap", "system" },
        { "/opt/foo/bin", "foo" },
        { "/opt/google/chrome", "google-chrome" },
        { "/opt/unknown", "none" },
    });
}

TEST(OwnerPlaces, ApplicationFoldersInHomeFolders)
{
    OwnerIndex index = sampleIndex();
    expectOwners(index, {
        { "/home", "none" },
        { "/home/alice", "none" },
        { "/home/alice/Documents/foo", "none" },
        { "/home/alice/.config", "none" },
        { "/home/alice/.config/foo", "foo" },
        { "/home/alice/.config/FOO/settings.ini", "foo" },
        { "/home/alice/.config/Code/User", "code" },
        { "/home/alice/.config/unknown", "none" },
        { "/home/alice/.local/share/foo/db", "foo" },
        { "/home/alice/.local/share/flatpak/app/org.example.App", "org.example.App" },
        { "/home/alice/.local/share/flatpak/runtime/org.kde.Platform", "system" },
        { "/home/alice/.cache/google-chrome/Default", "google-chrome" },
        { "/home/alice/.var/app/org.example.App/cache", "org.example.App" },
        { "/home/alice/snap/spotify/common", "spotify" },
        { "/home/alice/.foo", "foo" },
        { "/home/alice/.vscode/extensions", "code" },
        { "/home/alice/foo", "none" },
        // Other users' homes, and root's, are read the same way.
        { "/home/bob/.config/foo", "foo" },
        { "/root/.cache/foo", "foo" },
    });
}

TEST(OwnerPlaces, AgentPlacesTakePrecedence)
{
    OwnerIndex index = sampleIndex();
    expectOwners(index, {
        { "/home/alice/.claude/projects", "agent:claude-code" },
        { "/home/alice/.local/share/claude/versions", "agent:claude-code" },
        { "/home/alice/.gemini/settings.json", "agent:gemini" },
        { "/home/alice/.gemini/antigravity/brain", "agent:antigravity" },
        { "/home/alice/.config/opencode", "agent:opencode" },
        { "/home/alice/.config/Claude", "agent:claude-desktop" },
        { "/home/alice/Library/Application Support/Claude", "agent:claude-desktop" },
        { "/home/alice/.config/Code/User/globalStorage/saoudrizwan.claude-dev/tasks", "agent:cline" },
        { "/home/alice/.config/Code/User/globalStorage/other.extension", "code" },
        { "/home/alice/Documents/Codex", "agent:codex" },
    });
}

TEST(OwnerPlaces, AHomeOutsideHome)
{
    OwnerIndex index = sampleIndex("/srv/users/carol/");
    expectOwners(index, {
        { "/srv/users/carol/.config/foo", "foo" },
        { "/srv/users/carol/.claude", "agent:claude-code" },
        { "/srv/users/dave/.config/foo", "none" },
        { "/home/alice/.config/foo", "foo" },
    });
}

TEST(OwnerPlaces, RootPathsStartWhereTheyStand)
{
    OwnerIndex index = sampleIndex();
    OwnerPlaces places(index);
    // Deep inside an app's folder nothing changes the owner any more.
    OwnerPlaces::Step inside = places.start("/home/alice/.config/foo/plugins");
    EXPECT_EQ(inside.state, OwnerPlaces::settled);
    EXPECT_EQ(keyOf(index, inside.owner), "foo");
    EXPECT_EQ(places.step(inside, ".claude").owner, inside.owner);
    // Paths are taken component by component, whatever the slashes.
    EXPECT_EQ(places.ownerOf("//home///alice/./.config/foo/"), places.ownerOf("/home/alice/.config/foo"));
    // Only absolute paths stand anywhere known.
    EXPECT_EQ(places.start("home/alice/.config/foo").owner, OwnerPlaces::noOwner);
    EXPECT_EQ(places.start("").owner, OwnerPlaces::noOwner);
    EXPECT_LT(places.stateCount(), 200u);
}
