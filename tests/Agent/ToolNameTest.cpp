#include "Agent/ToolName.hpp"

#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace tarnwick;

TEST(ToolName, ShellQuoting)
{
    const std::pair<std::string_view, std::string_view> cases[] {
        { "/usr/local/bin/tarnwick", "/usr/local/bin/tarnwick" },
        { "/opt/tools-1.2/tarnwick_x@y%z+=:,", "/opt/tools-1.2/tarnwick_x@y%z+=:," },
        { "/Users/ada/my tools/tarnwick", "'/Users/ada/my tools/tarnwick'" },
        { "/tmp/it's/tarnwick", "'/tmp/it'\\''s/tarnwick'" },
        { "~/bin/tarnwick", "'~/bin/tarnwick'" },
        { "/tmp/$HOME/*", "'/tmp/$HOME/*'" },
        { "", "''" },
    };
    for (const auto& [text, quoted] : cases)
        EXPECT_EQ(ToolName::shellQuoted(text), quoted);
}

TEST(ToolName, BareNameOnlyWhenTheSearchPathLeadsHere)
{
    fixtures::TempFolder folder;
    folder.makeFolder("bin");
    folder.makeFolder("my tools");
    folder.makeFile("other/tarnwick", 10);
    ASSERT_EQ(chmod((folder / "other/tarnwick").c_str(), 0755), 0);
    const std::string executable = TARNWICK_EXECUTABLE;
    ASSERT_EQ(symlink(executable.c_str(), (folder / "bin/tarnwick").c_str()), 0);
    ASSERT_EQ(symlink(executable.c_str(), (folder / "my tools/tarnwick").c_str()), 0);
    const std::string bin = folder / "bin";
    const std::string other = folder / "other";

    EXPECT_EQ(ToolName::choose("tarnwick", executable, bin), "tarnwick");
    EXPECT_EQ(ToolName::choose("TarnWick", executable, "/nonexistent::" + bin), "tarnwick");
    // Started by a path, not the bare name.
    EXPECT_EQ(ToolName::choose(bin + "/tarnwick", executable, bin), executable);
    EXPECT_EQ(ToolName::choose("./tarnwick", executable, bin), executable);
    // The bare name would run another program first, or nothing at all.
    EXPECT_EQ(ToolName::choose("tarnwick", executable, other + ":" + bin), executable);
    EXPECT_EQ(ToolName::choose("tarnwick", executable, "/nonexistent"), executable);
    EXPECT_EQ(ToolName::choose("tarnwick-beta", executable, bin), executable);
    // A path the shell must see as one word.
    EXPECT_EQ(ToolName::choose("/x/tarnwick", folder / "my tools/tarnwick", bin), "'" + (folder / "my tools/tarnwick") + "'");
}
