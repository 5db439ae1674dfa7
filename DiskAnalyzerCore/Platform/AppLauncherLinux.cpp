#include "Platform/AppLauncher.hpp"

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/types.h>

extern char** environ;

namespace tarnwick::AppLauncher {

namespace {

// Signal dispositions and the mask are inherited through exec; the app starts with neither.
void resetSignals(posix_spawnattr_t& attributes)
{
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
}

}

bool startInBackground(const std::string& executable)
{
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
    if (posix_spawnattr_init(&attributes) != 0)
        return false;
    if (posix_spawn_file_actions_init(&actions) != 0) {
        posix_spawnattr_destroy(&attributes);
        return false;
    }
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    resetSignals(attributes);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    // Whatever else the caller had open (a pipe's end handed down as `7>&1 | cat`, a
    // wrapper's descriptors) would stay open as long as the app runs and keep the caller's
    // reader waiting for its end: the app keeps only its standard streams.
    posix_spawn_file_actions_addclosefrom_np(&actions, 3);
    // Nor does it keep the caller's folder busy (an unmount, a removed temporary folder).
    posix_spawn_file_actions_addchdir_np(&actions, "/");

    std::string program = executable;
    std::string word = backgroundWord;
    char* arguments[] = { program.data(), word.data(), nullptr };
    pid_t child = 0;
    // glibc reports a failed exec here, so success means the app is running.
    int status = posix_spawn(&child, program.c_str(), &actions, &attributes, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return status == 0;
}

}
