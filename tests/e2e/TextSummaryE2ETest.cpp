#include "Agent/ByteFormat.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <sys/stat.h>
#include <sys/wait.h>

using namespace tarnwick;
using tarnwick::fixtures::TempFolder;

namespace {

struct ProcessRun {
    int status = -1;
    std::string output;
};

ProcessRun runTarnwick(const std::string& arguments)
{
    ProcessRun run;
    std::string command = std::string(TARNWICK_EXECUTABLE) + " " + arguments + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    std::array<char, 4096> buffer;
    while (std::size_t n = fread(buffer.data(), 1, buffer.size(), pipe))
        run.output.append(buffer.data(), n);
    int status = pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

}

TEST(TextSummaryE2E, PrintsTotalsThatMatchLstat)
{
    TempFolder folder;
    folder.makeFile("big/data.bin", 2'500'000);
    folder.makeFile("small.txt", 1200);
    folder.makeSparseFile("sparse.img", 10'000'000);
    std::int64_t allocated = 0;
    std::int64_t logical = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
        struct stat info;
        lstat(entry.path().c_str(), &info);
        if (!S_ISDIR(info.st_mode)) {
            allocated += info.st_blocks * 512;
            logical += info.st_size;
        }
    }
    ProcessRun run = runTarnwick("'" + folder.path() + "'");
    ASSERT_EQ(run.status, 0) << run.output;
    EXPECT_NE(run.output.find(ByteFormat::format(allocated) + " on disk, " + ByteFormat::format(logical) + " logical, 4 items"), std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("big/"), std::string::npos);
    EXPECT_NE(run.output.find("Everything could be read."), std::string::npos);
}

TEST(TextSummaryE2E, RefusesWhatIsNoLocalDisk)
{
    ProcessRun proc = runTarnwick("/proc");
    EXPECT_EQ(proc.status, 1);
    EXPECT_NE(proc.output.find("This location is on a virtual file system (proc)."), std::string::npos) << proc.output;
    ProcessRun missing = runTarnwick("/no/such/place");
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.output.find("The location isn't available"), std::string::npos) << missing.output;
}
