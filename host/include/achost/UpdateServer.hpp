// The demo update server: a real HTTP server on 127.0.0.1 that plays the vendor's update server. It
// serves the files of one folder under /update_plugins/ and answers requests in the proxy form
// ("GET http://host/update_plugins/versions16.txt"), so that an add-on whose server address is
// built in reaches it through the standard http_proxy variable. Host-side only.
#pragma once

#include "GSRoot.hpp"

#include <memory>
#include <string>

namespace achost {

class GS_HOST_EXPORT UpdateServer {
public:
    UpdateServer();
    ~UpdateServer(); // Stop
    UpdateServer(const UpdateServer&) = delete;
    UpdateServer& operator=(const UpdateServer&) = delete;

    // Starts serving the plain files directly in `folder` on a free port of 127.0.0.1, on a thread of
    // its own (it answers while the host waits for anything). Any other path, a subfolder, a name
    // starting with "." or a missing file gets a 404 page; a method other than GET or HEAD gets 405.
    // False with the reason when the folder or the port cannot be had.
    bool Start(const std::string& folder, std::string* error);
    // Stops serving; open connections are closed.
    void Stop();
    bool IsRunning() const;
    // "http://127.0.0.1:PORT" while running, else "".
    std::string Address() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

// The demo folder installed beside the achost program: "<program folder>/update_plugins".
GS_HOST_EXPORT std::string BundledUpdateFolder();

// Sets http_proxy of this process to `address`, so that the add-on's HTTP requests reach that
// server whatever their host name (no_proxy and NO_PROXY are removed); an empty address removes
// http_proxy.
GS_HOST_EXPORT void UseHttpProxy(const std::string& address);

} // namespace achost
