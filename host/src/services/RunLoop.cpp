// The host's main run loop: libuv's default loop. The host turns it whenever it waits for the user,
// so that work the add-on scheduled on it (downloads, timers) goes on while a dialog is open.
#include "HostImpl.hpp"

#include <uv.h>

namespace achost {

void TurnRunLoop() {
    uv_run(uv_default_loop(), UV_RUN_NOWAIT);
}

} // namespace achost
