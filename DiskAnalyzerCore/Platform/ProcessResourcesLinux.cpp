#include "Platform/ProcessResources.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <pthread.h>
#include <string>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tarnwick::ProcessResources {

namespace {

constexpr int ioprioWhoProcess = 1;
constexpr int ioprioClassIdle = 3;
constexpr int ioprioClassShift = 13;

}

int raiseOpenFileLimit()
{
    struct rlimit limit;
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return 1024;
    rlim_t wanted = std::min<rlim_t>(limit.rlim_max, 10240);
    if (limit.rlim_cur < wanted) {
        struct rlimit raised = limit;
        raised.rlim_cur = wanted;
        if (setrlimit(RLIMIT_NOFILE, &raised) == 0)
            limit = raised;
    }
    return static_cast<int>(std::min<rlim_t>(limit.rlim_cur, 1 << 30));
}

void prepareScanThread(std::string_view name, ScanPriority priority)
{
    std::string shortName(name.substr(0, 15));
    pthread_setname_np(pthread_self(), shortName.c_str());
    if (priority == ScanPriority::background) {
        auto thread = static_cast<id_t>(syscall(SYS_gettid));
        setpriority(PRIO_PROCESS, thread, 10);
        syscall(SYS_ioprio_set, ioprioWhoProcess, static_cast<int>(thread), ioprioClassIdle << ioprioClassShift);
    }
}

double processorSeconds()
{
    struct rusage usage;
    if (getrusage(RUSAGE_SELF, &usage) != 0)
        return 0;
    auto seconds = [](const timeval& t) { return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

std::optional<double> runnableSeconds()
{
    std::error_code error;
    std::filesystem::directory_iterator tasks("/proc/self/task", error);
    if (error)
        return std::nullopt;
    double total = 0;
    for (const auto& task : tasks) {
        std::ifstream stat(task.path() / "schedstat");
        unsigned long long running = 0, waiting = 0;
        if (!(stat >> running >> waiting))
            continue; // a thread that just ended
        total += static_cast<double>(running + waiting) / 1e9;
    }
    return total;
}

std::int64_t peakResidentBytes()
{
    struct rusage usage;
    if (getrusage(RUSAGE_SELF, &usage) != 0)
        return 0;
    return static_cast<std::int64_t>(usage.ru_maxrss) * 1024;
}

}
