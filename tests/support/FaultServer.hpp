// Real HTTP servers on 127.0.0.1 for the update service's tests, over the same server library as the
// host's demo server (libmicrohttpd). Each server answers every request with what its route function
// says for the request's path, and can misbehave on purpose: never answer, cut the body off, trickle
// it slowly. Requests in the proxy form ("GET http://host/path") are answered like the others, so a
// server can stand in for any host through http_proxy. Paths are recorded as they came, escapes kept.
#pragma once

#include <microhttpd.h>

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace xn_test {

struct Reply {
    Reply(unsigned int status = 200, std::string body = "", std::string location = "", size_t cutAfter = 0,
          int trickleMs = 0, bool neverAnswer = false)
        : status(status), body(std::move(body)), location(std::move(location)), cutAfter(cutAfter),
          trickleMs(trickleMs), neverAnswer(neverAnswer) {}

    unsigned int status;
    std::string body;
    std::string location; // a Location header, for redirections
    size_t cutAfter;      // non-zero: the connection is closed after so many bytes of the body
    int trickleMs;        // non-zero: 64 bytes of the body per this many milliseconds
    bool neverAnswer;     // the request is read and nothing is ever sent back
};

class FaultServer {
public:
    using Route = std::function<Reply(const std::string& path)>;

    ~FaultServer() { Stop(); }

    // Serves `route` on a free port; false when no port can be had.
    bool Start(Route routeFunction) {
        route = std::move(routeFunction);
        sockaddr_in address;
        std::memset(&address, 0, sizeof address);
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        daemon = MHD_start_daemon(MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_THREAD_PER_CONNECTION, 0, nullptr,
                                  nullptr, &FaultServer::Answer, this, MHD_OPTION_SOCK_ADDR, &address,
                                  MHD_OPTION_UNESCAPE_CALLBACK, &FaultServer::KeepEscapes, nullptr,
                                  MHD_OPTION_END);
        const MHD_DaemonInfo* bound =
            daemon != nullptr ? MHD_get_daemon_info(daemon, MHD_DAEMON_INFO_BIND_PORT) : nullptr;
        port = bound != nullptr ? bound->port : 0;
        return port != 0;
    }

    // Stops serving; a request left unanswered is let go first. The port then refuses connections.
    void Stop() {
        {
            std::lock_guard<std::mutex> lock(mutex);
            stopping = true;
        }
        wake.notify_all();
        if (daemon != nullptr)
            MHD_stop_daemon(daemon);
        daemon = nullptr;
    }

    // "http://127.0.0.1:PORT"
    std::string Address() const { return "http://127.0.0.1:" + std::to_string(port); }

    std::vector<std::string> Paths() {
        std::lock_guard<std::mutex> lock(mutex);
        return paths;
    }
    std::vector<std::string> UserAgents() {
        std::lock_guard<std::mutex> lock(mutex);
        return userAgents;
    }

private:
    struct Body {
        FaultServer* server;
        Reply reply;
    };

    static size_t KeepEscapes(void*, MHD_Connection*, char* text) { return std::strlen(text); }

    // Waits `ms` or until the server stops; false when it stops.
    bool Pause(int ms) {
        std::unique_lock<std::mutex> lock(mutex);
        return !wake.wait_for(lock, std::chrono::milliseconds(ms), [this] { return stopping; });
    }

    static ssize_t Read(void* cls, uint64_t position, char* buffer, size_t max) {
        Body& body = *static_cast<Body*>(cls);
        const Reply& reply = body.reply;
        const size_t at = static_cast<size_t>(position);
        if (reply.cutAfter != 0 && at >= reply.cutAfter)
            return MHD_CONTENT_READER_END_WITH_ERROR;
        if (at >= reply.body.size())
            return MHD_CONTENT_READER_END_OF_STREAM;
        size_t n = std::min(max, reply.body.size() - at);
        if (reply.cutAfter != 0)
            n = std::min(n, reply.cutAfter - at);
        if (reply.trickleMs != 0) {
            n = std::min<size_t>(n, 64);
            if (!body.server->Pause(reply.trickleMs))
                return MHD_CONTENT_READER_END_WITH_ERROR;
        }
        std::memcpy(buffer, reply.body.data() + at, n);
        return static_cast<ssize_t>(n);
    }

    static void Free(void* cls) { delete static_cast<Body*>(cls); }

    static MHD_Result Answer(void* cls, MHD_Connection* connection, const char* url, const char*, const char*,
                             const char*, size_t*, void** state) {
        FaultServer& self = *static_cast<FaultServer*>(cls);
        if (*state == nullptr) { // the headers are in; the request has no body
            *state = &self;
            return MHD_YES;
        }
        const char* agent =
            MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_USER_AGENT);
        {
            std::lock_guard<std::mutex> lock(self.mutex);
            self.paths.push_back(url);
            self.userAgents.push_back(agent != nullptr ? agent : "");
        }
        Reply reply = self.route(url);
        if (reply.neverAnswer) {
            std::unique_lock<std::mutex> lock(self.mutex);
            self.wake.wait(lock, [&self] { return self.stopping; });
            return MHD_NO;
        }
        const size_t size = reply.body.size();
        const std::string location = reply.location;
        const unsigned int status = reply.status;
        MHD_Response* response = MHD_create_response_from_callback(
            size, 16384, &FaultServer::Read, new Body{&self, std::move(reply)}, &FaultServer::Free);
        if (!location.empty())
            MHD_add_response_header(response, MHD_HTTP_HEADER_LOCATION, location.c_str());
        const MHD_Result queued = MHD_queue_response(connection, status, response);
        MHD_destroy_response(response);
        return queued;
    }

    Route route;
    MHD_Daemon* daemon = nullptr;
    unsigned short port = 0;
    std::mutex mutex;
    std::condition_variable wake;
    bool stopping = false;
    std::vector<std::string> paths, userAgents;
};

} // namespace xn_test
