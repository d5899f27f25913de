// What add-on code the host is running, for the report of an add-on that crashes or throws. The
// description is composed when a call starts or ends, so that a signal handler only has to read it.
#include "AddonCalls.hpp"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <vector>

namespace achost {

namespace {

std::vector<std::string> sCalls; // outermost first
char sNow[1024];                 // "X, within Y": innermost first; empty outside the add-on
char sAddon[1024];

constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
struct sigaction sPrevious[sizeof kSignals / sizeof kSignals[0]];

void Compose() {
    std::string now;
    for (auto call = sCalls.rbegin(); call != sCalls.rend(); ++call)
        now += (now.empty() ? "" : ", within ") + *call;
    std::snprintf(sNow, sizeof sNow, "%s", now.c_str());
}

void WriteAll(const char* text) {
    for (size_t left = std::strlen(text); left > 0;) {
        const ssize_t n = write(STDERR_FILENO, text, left);
        if (n <= 0)
            return;
        text += n;
        left -= static_cast<size_t>(n);
    }
}

// Async-signal-safe: only reads the composed texts and writes them.
void OnCrash(int signal) {
    size_t k = 0;
    while (kSignals[k] != signal)
        ++k;
    static volatile sig_atomic_t reported = 0; // once: a sanitizer may end the run with a second signal
    if (sNow[0] != '\0' && reported == 0) {
        reported = 1;
        WriteAll("achost: the add-on ");
        WriteAll(sAddon);
        WriteAll(" crashed (SIG");
        WriteAll(sigabbrev_np(signal) != nullptr ? sigabbrev_np(signal) : "?");
        WriteAll(") during ");
        WriteAll(sNow);
        WriteAll("\n");
    }
    // What would have happened without this report happens now (a sanitizer's report, a core dump).
    sigaction(signal, &sPrevious[k], nullptr);
    raise(signal);
}

} // namespace

AddonCall::AddonCall(std::string what) {
    sCalls.push_back(std::move(what));
    Compose();
}

AddonCall::~AddonCall() {
    sCalls.pop_back();
    Compose();
}

void AddonCall::SetAddon(const std::string& path) {
    std::snprintf(sAddon, sizeof sAddon, "%s", path.c_str());
}

void AddonCall::Threw(const char* what) {
    std::cout.flush();
    std::fflush(nullptr);
    std::cerr << "achost: the add-on " << sAddon << " threw " << what << " out of " << sNow << "\n";
    std::cerr.flush();
    _exit(kAddonFaultStatus);
}

namespace {

// The handler runs on a stack of its own, so that an add-on that overflows its stack is reported
// too. A stack a sanitizer set up for its own handler is kept: the report fits on it as well.
void UseAlternateStack() {
    constexpr size_t kSize = 64 * 1024;
    static char* memory = nullptr; // allocated once, kept for the life of the process
    stack_t current;
    if (memory != nullptr || sigaltstack(nullptr, &current) != 0 || (current.ss_flags & SS_DISABLE) == 0)
        return;
    memory = new char[kSize];
    stack_t stack;
    stack.ss_sp = memory;
    stack.ss_size = kSize;
    stack.ss_flags = 0;
    sigaltstack(&stack, nullptr);
}

} // namespace

void InstallCrashReport() {
    UseAlternateStack();
    struct sigaction action;
    std::memset(&action, 0, sizeof action);
    action.sa_handler = OnCrash;
    action.sa_flags = SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (size_t k = 0; k < sizeof kSignals / sizeof kSignals[0]; ++k)
        sigaction(kSignals[k], &action, &sPrevious[k]);
}

} // namespace achost
