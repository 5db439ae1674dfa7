#include "Metrics/TextfileWriter.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

using namespace tarnwick;
using fixtures::readFile;

namespace {

std::vector<std::string> names(const std::string& folder)
{
    std::vector<std::string> result;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        result.push_back(entry.path().filename());
    std::ranges::sort(result);
    return result;
}

}

TEST(TextfileWriter, ReplacesTheFileWholeAndReadableByTheExporter)
{
    fixtures::TempFolder folder;
    auto first = TextfileWriter::write(folder.path(), "a 1\n");
    ASSERT_TRUE(first);
    EXPECT_EQ(*first, folder / "tarnwick.prom");
    ASSERT_TRUE(TextfileWriter::write(folder.path(), "b 2\n"));
    EXPECT_EQ(readFile(folder / "tarnwick.prom"), "b 2\n");
    EXPECT_EQ(names(folder.path()), std::vector<std::string> { "tarnwick.prom" });
    struct stat info {};
    ASSERT_EQ(::stat((folder / "tarnwick.prom").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0644u);
}

TEST(TextfileWriter, FailsInPlainWordsAndChangesNothing)
{
    fixtures::TempFolder folder;
    folder.makeFile("plain-file", 10);
    struct Case {
        std::string target;
        TextfileWriter::Failure::Case reason;
        std::string_view words;
    };
    std::vector<Case> cases {
        { folder / "missing", TextfileWriter::Failure::Case::missing, "there is no such folder." },
        { folder / "plain-file", TextfileWriter::Failure::Case::notAFolder, "it is not a folder." },
        { folder / "plain-file/below", TextfileWriter::Failure::Case::notAFolder, "it is not a folder." },
        // A folder of a file system that makes no files, which even root cannot write in.
        { "/proc/self", TextfileWriter::Failure::Case::notWritable, "the folder is read-only or not yours to write in." },
    };
    if (::geteuid() != 0) {
        folder.makeFolder("read-only");
        ::chmod((folder / "read-only").c_str(), 0555);
        cases.push_back({ folder / "read-only", TextfileWriter::Failure::Case::notWritable, "the folder is read-only or not yours to write in." });
    }
    for (const Case& c : cases) {
        auto written = TextfileWriter::write(c.target, "a 1\n");
        ASSERT_FALSE(written) << c.target;
        EXPECT_EQ(written.error().reason, c.reason) << c.target;
        EXPECT_EQ(written.error().message(), "Tarnwick couldn't write the metrics into " + c.target + ": " + std::string(c.words));
    }
    EXPECT_EQ(readFile(folder / "plain-file").size(), 10u);
}

TEST(TextfileWriter, SweepsTemporaryFilesOfAKilledWriterButNotAFreshOne)
{
    fixtures::TempFolder folder;
    std::ofstream(folder / ".tarnwick.prom.Abc123") << "cut sh";
    std::ofstream(folder / ".tarnwick.prom.Fresh1") << "being writ";
    std::ofstream(folder / "other.prom") << "x 1\n";
    const auto hourAgo = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
    std::filesystem::last_write_time(folder / ".tarnwick.prom.Abc123", hourAgo);
    std::filesystem::last_write_time(folder / "other.prom", hourAgo);
    ASSERT_TRUE(TextfileWriter::write(folder.path(), "a 1\n"));
    EXPECT_EQ(names(folder.path()), (std::vector<std::string> { ".tarnwick.prom.Fresh1", "other.prom", "tarnwick.prom" }));
}
