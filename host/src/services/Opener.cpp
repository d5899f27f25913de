// The desktop opener: every request is recorded in the running host; a launching session hands it to
// xdg-open, started with posix_spawnp and an argument vector (never a shell).
#include "Desktop.hpp"
#include "HostImpl.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

extern char** environ;

namespace achost {

namespace {

// Viewers that outlived the wait below; reaped when they end, at a later launch.
std::vector<pid_t> sRunning;

// Runs `xdg-open target` in a session of its own, with no terminal input; NoError when it reported
// success, or is still running after two seconds (a desktop without a known opener runs the viewer
// itself, which must not hold the host).
GSErrCode Launch(const std::string& target) {
    sRunning.erase(std::remove_if(sRunning.begin(), sRunning.end(),
                                  [](pid_t pid) { return waitpid(pid, nullptr, WNOHANG) != 0; }),
                   sRunning.end());
    std::string program = "xdg-open";
    char* argv[] = {program.data(), const_cast<char*>(target.c_str()), nullptr};
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    pid_t child = 0;
    const int spawned = posix_spawnp(&child, argv[0], &files, &attributes, argv, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    if (spawned != 0)
        return APIERR_GENERAL;
    for (int waited = 0; waited < 200; ++waited) {
        int status = 0;
        const pid_t ended = waitpid(child, &status, WNOHANG);
        if (ended < 0 && errno != EINTR)
            return APIERR_GENERAL;
        if (ended == child)
            return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? GSErrCode(NoError)
                                                                 : GSErrCode(APIERR_GENERAL);
        usleep(10000);
    }
    sRunning.push_back(child);
    return NoError;
}

} // namespace

} // namespace achost

GSErrCode Desktop::OpenWithDefaultApplication(const GS::UniString& target) {
    achost::Host::Impl* s = achost::RunningHost("Desktop::OpenWithDefaultApplication",
                                                {achost::Phase::Idle, achost::Phase::Command});
    if (s == nullptr)
        return APIERR_REFUSEDCMD;
    if (target.IsEmpty())
        return ErrParam;
    const std::string text = target.ToUTF8();
    s->opened.push_back(text);
    const GSErrCode launched = s->options.launch ? achost::Launch(text) : NoError;
    if (launched != NoError)
        s->openFailures.push_back(s->opened.size() - 1);
    return launched;
}
