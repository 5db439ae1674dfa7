#include "Agent/AgentHelp.hpp"
#include "Agent/LocalAnswer.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;

namespace {

// Each of parts appears in text, in this order.
void expectInOrder(const std::string& text, std::initializer_list<std::string_view> parts)
{
    std::size_t position = 0;
    for (std::string_view part : parts) {
        std::size_t found = text.find(part, position);
        ASSERT_NE(found, std::string::npos) << "missing or out of order: " << part;
        position = found + part.size();
    }
}

std::size_t count(const std::string& text, std::string_view part)
{
    std::size_t n = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++n;
    return n;
}

}

TEST(AgentHelp, GeneralHelpPartsInOrder)
{
    std::string text = AgentHelp::general("'/opt/my tools/tarnwick'");
    expectInOrder(text, {
        "Tarnwick measures disk space on this computer and keeps a snapshot",
        "Usage: '/opt/my tools/tarnwick' COMMAND [PATH] [OPTIONS] [--json]\n",
        "'/opt/my tools/tarnwick' help COMMAND tells a command's options.\n",
        "How it runs\nWhen the Tarnwick app is running,",
        "From the daily snapshots, no scan needed:\n  disks ", "\n  changes ", "\n  history ", "\n  types ",
        "Monitoring, no scan needed:\n  alerts ", "\n  add-alert ", "\n  remove-alert  Removes an alert",
        "With a scan, in the app's window:\n  scan ", "\n  wait ", "\n  summary ", "\n  find ", "\n  show ", "\n  rescan ",
        "Other:\n  status ", "\n  skill ",
        "\n  help          This help, or a command's with help COMMAND.\n",
        "Typical tasks", "'/opt/my tools/tarnwick' changes / --period week",
        "'/opt/my tools/tarnwick' --open ~/Projects", "# opens it in Tarnwick's window and scans it",
        "'/opt/my tools/tarnwick' show ~/.npm",
        "Rules\n  - Don't delete anything",
        "\n  - Tarnwick reads what the user's file permissions allow. NO_ACCESS names the missing permission and the owner",
        "Output\nText by default.", "Exit status: 0 done;", "4 Tarnwick couldn't start.",
    });
    EXPECT_EQ(count(text, "\n  - "), 7u);
    EXPECT_NE(text.back(), '\n');
}

TEST(AgentHelp, CommandHelp)
{
    std::string text = AgentHelp::forCommand(*AgentCommands::find("changes"), "tarnwick");
    expectInOrder(text, {
        "tarnwick changes [PATH] [--period PERIOD] [--limit N]\n",
        "How a folder or disk changed over a period, from the daily snapshots.\n",
        "The place's change and its size at both ends;",
        "PATH", "Folder or disk. Without it:",
        "--period PERIOD", "Since when: yesterday,",
        "--limit N", "How many changed items to list, 1 to 50; 15 by default.\n",
        "tarnwick changes --period week\n", "tarnwick changes ~/.cache --period month --limit 30\n",
        "Answers from the saved snapshots when the app isn't running.",
    });
    EXPECT_NE(text.back(), '\n');

    std::string summary = AgentHelp::forCommand(*AgentCommands::find("summary"), "tarnwick");
    EXPECT_TRUE(summary.ends_with("Works in the running app; starts it when it isn't running."));
    for (std::string_view name : { "status", "skill" }) {
        std::string other = AgentHelp::forCommand(*AgentCommands::find(name), "tarnwick");
        EXPECT_EQ(other.find("running app"), std::string::npos) << name;
        EXPECT_EQ(other.find("saved snapshots when"), std::string::npos) << name;
    }
}

TEST(AgentHelp, UnknownCommandNamesTheTool)
{
    auto text = AgentHelp::forName("nonsense", "/usr/local/bin/tarnwick");
    ASSERT_FALSE(text);
    EXPECT_EQ(text.error(), "Tarnwick has no command nonsense. Run /usr/local/bin/tarnwick help for the list.");
    EXPECT_EQ(AgentHelp::forName(std::nullopt, "tarnwick"), AgentHelp::general("tarnwick"));
}

TEST(AgentHelp, SkillFrontMatterAndBody)
{
    std::string text = AgentHelp::skill("tarnwick");
    EXPECT_TRUE(text.starts_with("---\nname: tarnwick\ndescription: Disk space on this computer with Tarnwick - what takes space,"));
    expectInOrder(text, {
        "fills up.\n---\n",
        "Tarnwick is a disk space app on this computer with a command line. Before the first use in a session, run\n",
        "\n    tarnwick help\n",
        "and follow it. It reads only; don't delete anything unless the user asks.",
        "For any map mode, run `types PATH --by MODE`",
        "It reports the window\u2019s groups,",
        "Follow next_cursor with `--cursor N` for more groups.",
        "Run it outside your sandbox, asking the user for that permission when you have to (in Codex, a rule in ~/.codex/rules allows it).",
    });
    EXPECT_TRUE(text.ends_with("allows it)."));
}

TEST(LocalAnswer, WhatTheToolAnswersItself)
{
    auto answer = [](std::vector<std::string> words) { return LocalAnswer::forInvocation(AgentCommands::parse(words), "tarnwick"); };

    auto version = answer({ "--version" });
    ASSERT_TRUE(version);
    EXPECT_EQ(*version, (PrintedOutput { "Tarnwick " TARNWICK_VERSION "\n", "", 0 }));

    auto help = answer({ "help", "changes" });
    ASSERT_TRUE(help);
    EXPECT_EQ(help->standardOutput, AgentHelp::forCommand(*AgentCommands::find("changes"), "tarnwick") + "\n");
    EXPECT_EQ(help->exitStatus, 0);

    EXPECT_EQ(answer({ "help", "nonsense" }),
        (PrintedOutput { "", "Tarnwick has no command nonsense. Run tarnwick help for the list.\n", 2 }));
    EXPECT_EQ(answer({ "changes", "--limit", "0" }),
        (PrintedOutput { "", "--limit doesn't take 0: How many changed items to list, 1 to 50; 15 by default.\n", 2 }));
    EXPECT_EQ(answer({ "status", "/" }), (PrintedOutput { "", "status takes no path.\n", 2 }));

    auto skill = answer({ "skill" });
    ASSERT_TRUE(skill);
    EXPECT_EQ(skill->standardOutput, AgentHelp::skill("tarnwick") + "\n");
    auto skillJSON = answer({ "skill", "--json" });
    ASSERT_TRUE(skillJSON);
    EXPECT_TRUE(skillJSON->standardOutput.starts_with("{\n  \"message\": \"---\\nname: tarnwick\\n"));

    EXPECT_FALSE(answer({ "changes", "/" }));
    EXPECT_FALSE(answer({ "summary" }));
}
