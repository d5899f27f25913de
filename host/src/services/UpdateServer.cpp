// The demo update server over libmicrohttpd: one folder's files under /update_plugins/.
#include "achost/UpdateServer.hpp"

#include <microhttpd.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace achost {

namespace {

const char kPrefix[] = "/update_plugins/";
const char kNotFound[] = "<html><body><h1>404 Not Found</h1></body></html>\n";

// The path of a request in origin form or in the proxy form "http://authority/path".
std::string PathOf(const char* url) {
    std::string path = url;
    if (path.compare(0, 7, "http://") == 0) {
        const size_t slash = path.find('/', 7);
        path = slash == std::string::npos ? "/" : path.substr(slash);
    }
    return path;
}

const char* ContentType(const std::string& name) {
    const size_t dot = name.rfind('.');
    const std::string extension = dot == std::string::npos ? "" : name.substr(dot + 1);
    if (extension == "htm" || extension == "html")
        return "text/html; charset=utf-8";
    return extension == "txt" ? "text/plain" : "application/octet-stream";
}

MHD_Result Queue(MHD_Connection* connection, unsigned int status, MHD_Response* response) {
    const MHD_Result queued = MHD_queue_response(connection, status, response);
    MHD_destroy_response(response);
    return queued;
}

MHD_Result QueueText(MHD_Connection* connection, unsigned int status, const char* text) {
    MHD_Response* response =
        MHD_create_response_from_buffer(std::strlen(text), const_cast<char*>(text), MHD_RESPMEM_PERSISTENT);
    MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, "text/html; charset=utf-8");
    return Queue(connection, status, response);
}

} // namespace

struct UpdateServer::Impl {
    std::string folder;
    MHD_Daemon* daemon = nullptr;
    unsigned short port = 0;

    static MHD_Result Answer(void* cls, MHD_Connection* connection, const char* url, const char* method,
                             const char* /*version*/, const char* /*uploadData*/, size_t* /*uploadSize*/,
                             void** /*state*/) {
        const Impl& self = *static_cast<const Impl*>(cls);
        if (std::strcmp(method, MHD_HTTP_METHOD_GET) != 0 && std::strcmp(method, MHD_HTTP_METHOD_HEAD) != 0)
            return QueueText(connection, MHD_HTTP_METHOD_NOT_ALLOWED, "");
        const std::string path = PathOf(url);
        const std::string name = path.compare(0, sizeof kPrefix - 1, kPrefix) == 0
                                     ? path.substr(sizeof kPrefix - 1)
                                     : std::string();
        if (name.empty() || name[0] == '.' || name.find('/') != std::string::npos)
            return QueueText(connection, MHD_HTTP_NOT_FOUND, kNotFound);
        const int fd = open((self.folder + "/" + name).c_str(), O_RDONLY | O_CLOEXEC);
        struct stat info;
        if (fd < 0 || fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
            if (fd >= 0)
                close(fd);
            return QueueText(connection, MHD_HTTP_NOT_FOUND, kNotFound);
        }
        MHD_Response* response = MHD_create_response_from_fd(static_cast<uint64_t>(info.st_size), fd);
        if (response == nullptr) {
            close(fd);
            return MHD_NO;
        }
        MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, ContentType(name));
        return Queue(connection, MHD_HTTP_OK, response);
    }
};

UpdateServer::UpdateServer() : impl(std::make_unique<Impl>()) {}

UpdateServer::~UpdateServer() {
    Stop();
}

bool UpdateServer::Start(const std::string& folder, std::string* error) {
    Stop();
    struct stat info;
    if (stat(folder.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) {
        *error = "the update folder " + folder + " is not a folder";
        return false;
    }
    impl->folder = folder;
    sockaddr_in address;
    std::memset(&address, 0, sizeof address);
    address.sin_family = AF_INET;
    address.sin_port = 0;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    impl->daemon = MHD_start_daemon(MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_AUTO, 0, nullptr, nullptr,
                                    &Impl::Answer, impl.get(), MHD_OPTION_SOCK_ADDR, &address,
                                    MHD_OPTION_CONNECTION_TIMEOUT, 30u, MHD_OPTION_END);
    const MHD_DaemonInfo* bound =
        impl->daemon != nullptr ? MHD_get_daemon_info(impl->daemon, MHD_DAEMON_INFO_BIND_PORT) : nullptr;
    if (bound == nullptr || bound->port == 0) {
        Stop();
        *error = "the update server cannot listen on 127.0.0.1";
        return false;
    }
    impl->port = bound->port;
    return true;
}

void UpdateServer::Stop() {
    if (impl->daemon != nullptr)
        MHD_stop_daemon(impl->daemon);
    impl->daemon = nullptr;
    impl->port = 0;
}

bool UpdateServer::IsRunning() const {
    return impl->daemon != nullptr;
}

std::string UpdateServer::Address() const {
    return impl->daemon != nullptr ? "http://127.0.0.1:" + std::to_string(impl->port) : "";
}

std::string BundledUpdateFolder() {
    char self[4096] = {};
    const ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    const std::string path = n > 0 ? std::string(self, static_cast<size_t>(n)) : std::string();
    const size_t slash = path.rfind('/');
    return (slash == std::string::npos ? std::string(".") : path.substr(0, slash)) + "/update_plugins";
}

void UseHttpProxy(const std::string& address) {
    if (address.empty()) {
        unsetenv("http_proxy");
        return;
    }
    setenv("http_proxy", address.c_str(), 1);
    // A person's exceptions would send the add-on past the demo server to the real addresses.
    unsetenv("no_proxy");
    unsetenv("NO_PROXY");
}

} // namespace achost
