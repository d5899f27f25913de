// The desktop opener: every request is recorded in the running host; a launching session hands it to
// xdg-open, started with posix_spawnp and an argument vector (never a shell), and waits for it.
#include "Desktop.hpp"
#include "HostImpl.hpp"

#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>

extern char** environ;

namespace achost {

namespace {

// Runs `xdg-open target`; NoError when it started and reported success.
GSErrCode Launch(const std::string& target) {
    std::string program = "xdg-open";
    char* argv[] = {program.data(), const_cast<char*>(target.c_str()), nullptr};
    pid_t child = 0;
    if (posix_spawnp(&child, argv[0], nullptr, nullptr, argv, environ) != 0)
        return APIERR_GENERAL;
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            return APIERR_GENERAL;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? GSErrCode(NoError) : GSErrCode(APIERR_GENERAL);
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
    return s->options.launch ? achost::Launch(text) : NoError;
}
