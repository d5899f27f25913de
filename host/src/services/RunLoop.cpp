// The host's main run loop: libuv's default loop. The host turns it whenever it waits for the user,
// so that work the add-on scheduled on it (downloads, timers) goes on while a dialog is open. The
// host's own handles on the loop are unreferenced: a referenced handle or request on the loop is
// the add-on's, so a loop that is no longer alive has no transfer left.
#include "AddonCalls.hpp"
#include "HostImpl.hpp"

#include <uv.h>

namespace achost {

namespace {

// Add-on code reached from the loop while the host is idle runs as a command does.
class RunLoopPhase {
public:
    explicit RunLoopPhase(Host::Impl& s) : s(s), before(s.phase), call("a run-loop callback") {
        if (before == Phase::Idle)
            s.phase = Phase::Command;
    }
    ~RunLoopPhase() { s.phase = before; }
    RunLoopPhase(const RunLoopPhase&) = delete;
    RunLoopPhase& operator=(const RunLoopPhase&) = delete;

private:
    Host::Impl& s;
    Phase before;
    AddonCall call;
};

// Closes a handle that lives on the caller's stack and lets the loop finish closing it at once.
void CloseNow(uv_handle_t* handle) {
    uv_close(handle, nullptr);
    uv_run(uv_default_loop(), UV_RUN_NOWAIT);
}

} // namespace

void TurnRunLoop(Host::Impl& s) {
    RunLoopPhase phase(s);
    uv_run(uv_default_loop(), UV_RUN_NOWAIT);
}

bool TurnRunLoopUntilIdle(Host::Impl& s, double limitSeconds) {
    uv_loop_t* loop = uv_default_loop();
    RunLoopPhase phase(s);
    bool expired = false;
    uv_timer_t limit;
    uv_timer_init(loop, &limit);
    limit.data = &expired;
    uv_timer_start(
        &limit, [](uv_timer_t* timer) { *static_cast<bool*>(timer->data) = true; },
        static_cast<uint64_t>(limitSeconds * 1000), 0);
    uv_unref(reinterpret_cast<uv_handle_t*>(&limit));
    while (!expired && uv_loop_alive(loop))
        uv_run(loop, UV_RUN_ONCE);
    CloseNow(reinterpret_cast<uv_handle_t*>(&limit));
    return !expired;
}

void TurnRunLoopUntilReadable(Host::Impl& s, int fd, const std::function<bool()>& changed) {
    uv_loop_t* loop = uv_default_loop();
    uv_poll_t input;
    if (uv_poll_init(loop, &input, fd) != 0) // a regular file or /dev/null: always readable
        return;
    RunLoopPhase phase(s);
    bool readable = false;
    input.data = &readable;
    uv_poll_start(&input, UV_READABLE | UV_DISCONNECT, [](uv_poll_t* poll, int, int) {
        *static_cast<bool*>(poll->data) = true;
        uv_poll_stop(poll);
    });
    while (!readable && !changed())
        uv_run(loop, UV_RUN_ONCE);
    CloseNow(reinterpret_cast<uv_handle_t*>(&input));
}

} // namespace achost
