// XN_General::URLDownload: one HTTP transfer driven by the host's main run loop.
//
// The main run loop is libuv's default loop. It belongs to the host: the host creates it, turns it
// while it waits for the user (idle and inside every modal dialog and alert), and the add-on only
// schedules its sockets and timers on it through uv_default_loop(), as it would schedule a stream on
// the main run loop of other platforms. libcurl's multi interface does the HTTP work in the
// socket-action style: curl tells us which sockets to watch and when to wake it, libuv watches them,
// and nothing ever blocks or runs on another thread.
//
// The caller's callback is never called from inside a curl callback: curl's callbacks only write to
// the file and take notes, and the notes are reported afterwards (Report), in order. A callback may
// open a modal dialog that turns the loop again; the transfer goes on meanwhile and what it notes is
// reported by the outer Report once the callback returns, so the order of events always holds.
#include "XN_File.hpp"
#include "XN_General.hpp"
#include "sett_Addon.hpp"

#include <curl/curl.h>
#include <uv.h>

#include <memory>
#include <set>
#include <string>

namespace {

constexpr uint64_t kTimeLimitMs = 60000; // the whole transfer, from its start
constexpr size_t kBlockBytes = 16384;    // the largest read reported as one block
constexpr long kMaxRedirections = 10;

struct URLDownloadParams;

// One socket curl asked to watch.
struct SocketWatch {
    uv_poll_t poll;
    URLDownloadParams* params;
    curl_socket_t socket;
};

enum class Outcome { Running, Completed, Failed, Cancelled };

// The state of one transfer: created by URLDownload, freed once the transfer has ended, its last
// event has been reported and the loop has let go of its handles.
struct URLDownloadParams {
    XN_URL_Callback callback = nullptr;
    void* userData = nullptr;
    CURLM* multi = nullptr;
    CURL* easy = nullptr;
    uv_timer_t limit;     // the 60-second limit
    uv_timer_t curlTimer; // the wake-ups curl asks for
    std::set<SocketWatch*> sockets;
    int openHandles = 0; // libuv handles not closed yet
    XN_Location destination;
    XN_File file;
    int status = 0;          // 0 after opening, 50 while data flows, 101 when complete, -1 after a failure
    bool answered = false;   // the server's answer has begun
    bool openedSent = false; // XN_URL_Opened was reported
    bool fileOpen = false;   // the destination is open for writing
    bool paused = false;     // curl holds a block until the destination is open
    long blocksToReport = 0;
    Outcome outcome = Outcome::Running;
    int curlResult = -1;    // curl's result once it has finished the transfer, -1 before
    bool ended = false;     // curl, the file and the timers are released
    bool finalSent = false; // Completed or Failed was reported
    bool reporting = false; // Report is on the stack
};

// Transfers that have not been freed yet; the add-on's unload ends them without a word.
std::set<URLDownloadParams*> sTransfers;

void Report(URLDownloadParams* params);

void FreeWhenDone(URLDownloadParams* params) {
    const bool reported =
        params->finalSent || params->outcome == Outcome::Cancelled || params->callback == nullptr;
    if (params->ended && reported && !params->reporting && params->openHandles == 0) {
        sTransfers.erase(params);
        delete params;
    }
}

void HandleClosed(uv_handle_t* handle) {
    URLDownloadParams* params = static_cast<URLDownloadParams*>(handle->data);
    if (handle->type == UV_POLL)
        delete reinterpret_cast<SocketWatch*>(handle);
    --params->openHandles;
    FreeWhenDone(params);
}

void CloseSocketWatch(SocketWatch* watch) {
    watch->params->sockets.erase(watch);
    uv_poll_stop(&watch->poll);
    uv_close(reinterpret_cast<uv_handle_t*>(&watch->poll), HandleClosed);
}

// Releases curl, the file and the timers; the loop then holds nothing of the transfer but handles
// that are closing. No event is sent from here.
void EndTransfer(URLDownloadParams* params, Outcome outcome) {
    if (params->ended)
        return;
    params->ended = true;
    params->outcome = outcome;
    params->status = outcome == Outcome::Completed ? 101 : outcome == Outcome::Failed ? -1 : params->status;
    uv_timer_stop(&params->limit);
    uv_timer_stop(&params->curlTimer);
    curl_multi_remove_handle(params->multi, params->easy);
    curl_easy_cleanup(params->easy);
    curl_multi_cleanup(params->multi); // closes the connections: their sockets are given up below
    params->easy = nullptr;
    params->multi = nullptr;
    while (!params->sockets.empty())
        CloseSocketWatch(*params->sockets.begin());
    params->file.Close();
    uv_close(reinterpret_cast<uv_handle_t*>(&params->limit), HandleClosed);
    uv_close(reinterpret_cast<uv_handle_t*>(&params->curlTimer), HandleClosed);
}

// Ends the transfer once curl has finished it. A transfer that ended well is answered: its Opened
// is reported before it ends.
void CollectResult(URLDownloadParams* params) {
    if (params->ended)
        return;
    int waiting = 0;
    while (CURLMsg* message = curl_multi_info_read(params->multi, &waiting))
        if (message->msg == CURLMSG_DONE)
            params->curlResult = message->data.result;
    const bool ok = params->curlResult == CURLE_OK;
    params->answered = params->answered || ok;
    if (params->curlResult >= 0 && (!ok || (params->openedSent && !params->paused)))
        EndTransfer(params, ok ? Outcome::Completed : Outcome::Failed);
}

int Tell(URLDownloadParams* params, XN_URL_Message message, double progress) {
    return params->callback != nullptr ? params->callback(message, progress, params->userData) : 0;
}

// Reports what happened since the last report, in order. A Report reached again from inside a
// callback leaves the work to the one below it on the stack.
void Report(URLDownloadParams* params) {
    if (params->reporting)
        return;
    params->reporting = true;
    bool again = true;
    while (again && params->outcome != Outcome::Cancelled) {
        again = false;
        if (params->answered && !params->openedSent) {
            params->openedSent = true;
            params->status = 0;
            if (Tell(params, XN_URL_Opened, 0.0) == 1) {
                EndTransfer(params, Outcome::Cancelled);
                break;
            }
            if (!params->ended && params->file.Open(params->destination, XN_File_WriteEmptyMode) != 0)
                EndTransfer(params, Outcome::Failed);
            params->fileOpen = !params->ended;
            if (!params->ended && params->paused) {
                params->paused = false;
                curl_easy_pause(params->easy, CURLPAUSE_CONT); // writes what curl held back
            }
            again = true;
        }
        while (params->blocksToReport > 0 && params->outcome != Outcome::Cancelled) {
            --params->blocksToReport;
            Tell(params, XN_URL_Progress, 0.5);
            again = true;
        }
        CollectResult(params);
        if (params->ended && !params->finalSent && params->outcome != Outcome::Cancelled &&
            params->blocksToReport == 0) {
            params->finalSent = true;
            Tell(params, params->outcome == Outcome::Completed ? XN_URL_Completed : XN_URL_Failed, 0.0);
        }
    }
    params->reporting = false;
    FreeWhenDone(params);
}

// curl callbacks: they only write and take notes -------------------------------------------------

size_t OnHeader(char* /*data*/, size_t size, size_t count, void* userp) {
    static_cast<URLDownloadParams*>(userp)->answered = true;
    return size * count;
}

size_t OnBody(char* data, size_t size, size_t count, void* userp) {
    URLDownloadParams* params = static_cast<URLDownloadParams*>(userp);
    const size_t bytes = size * count;
    params->answered = true;
    if (!params->fileOpen) { // also while the Opened callback turns the run loop
        params->paused = true;
        return CURL_WRITEFUNC_PAUSE;
    }
    // A failed write is not reported: the transfer goes on, as it always has.
    for (size_t done = 0; done < bytes; done += kBlockBytes) {
        const size_t block = bytes - done < kBlockBytes ? bytes - done : kBlockBytes;
        params->file.Write(data + done, block);
        ++params->blocksToReport;
    }
    params->status = 50;
    return bytes;
}

void OnSocketEvent(uv_poll_t* poll, int status, int events) {
    SocketWatch* watch = reinterpret_cast<SocketWatch*>(poll);
    URLDownloadParams* params = watch->params;
    if (params->ended)
        return;
    const int flags = status < 0 ? CURL_CSELECT_ERR
                                 : ((events & UV_READABLE) != 0 ? CURL_CSELECT_IN : 0) |
                                       ((events & UV_WRITABLE) != 0 ? CURL_CSELECT_OUT : 0);
    int running = 0;
    curl_multi_socket_action(params->multi, watch->socket, flags, &running);
    Report(params);
}

int OnSocketRequest(CURL* /*easy*/, curl_socket_t socket, int what, void* userp, void* socketp) {
    URLDownloadParams* params = static_cast<URLDownloadParams*>(userp);
    SocketWatch* watch = static_cast<SocketWatch*>(socketp);
    if (what == CURL_POLL_REMOVE) {
        if (watch != nullptr)
            CloseSocketWatch(watch);
        if (!params->ended)
            curl_multi_assign(params->multi, socket, nullptr);
        return 0;
    }
    if (watch == nullptr) {
        watch = new SocketWatch;
        watch->params = params;
        watch->socket = socket;
        if (uv_poll_init_socket(uv_default_loop(), &watch->poll, socket) != 0) {
            delete watch;
            return -1;
        }
        watch->poll.data = params;
        ++params->openHandles;
        params->sockets.insert(watch);
        curl_multi_assign(params->multi, socket, watch);
    }
    const int events =
        ((what & CURL_POLL_IN) != 0 ? UV_READABLE : 0) | ((what & CURL_POLL_OUT) != 0 ? UV_WRITABLE : 0);
    uv_poll_start(&watch->poll, events, OnSocketEvent);
    return 0;
}

void OnCurlTimer(uv_timer_t* timer) {
    URLDownloadParams* params = static_cast<URLDownloadParams*>(timer->data);
    int running = 0;
    curl_multi_socket_action(params->multi, CURL_SOCKET_TIMEOUT, 0, &running);
    Report(params);
}

int OnTimerRequest(CURLM* /*multi*/, long timeoutMs, void* userp) {
    URLDownloadParams* params = static_cast<URLDownloadParams*>(userp);
    if (timeoutMs < 0)
        uv_timer_stop(&params->curlTimer);
    else
        uv_timer_start(&params->curlTimer, OnCurlTimer, static_cast<uint64_t>(timeoutMs), 0);
    return 0;
}

void OnTimeLimit(uv_timer_t* timer) {
    URLDownloadParams* params = static_cast<URLDownloadParams*>(timer->data);
    EndTransfer(params, Outcome::Failed);
    Report(params);
}

// Addresses --------------------------------------------------------------------------------------

int HexValue(char c) {
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                  : -1;
}

// Characters left as they are when an address is escaped again: letters, digits and the characters
// an address uses for its own structure.
bool StaysUnescaped(unsigned char c) {
    static const std::string kLegal = "-_.!~*'();/?:@&=+$,#[]";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           kLegal.find(static_cast<char>(c)) != std::string::npos;
}

// The UTF-8 address with every percent escape undone, then every character that is not legal in an
// address escaped, uniformly. False when the unescaped bytes are not UTF-8.
bool Reescape(const std::string& address, std::string* result) {
    std::string plain;
    for (size_t i = 0; i < address.size(); ++i) {
        const int high = i + 2 < address.size() && address[i] == '%' ? HexValue(address[i + 1]) : -1;
        const int low = high >= 0 ? HexValue(address[i + 2]) : -1;
        if (low >= 0) {
            plain += static_cast<char>(high * 16 + low);
            i += 2;
        } else
            plain += address[i];
    }
    if (!XN_String::IsUTF8(plain.c_str(), static_cast<unsigned int>(plain.size()), false))
        return false;
    static const char kDigits[] = "0123456789ABCDEF";
    result->clear();
    for (unsigned char c : plain) {
        if (StaysUnescaped(c))
            *result += static_cast<char>(c);
        else
            *result += std::string("%") + kDigits[c >> 4] + kDigits[c & 15];
    }
    return true;
}

// Accepts an absolute http or https address only.
bool IsWebAddress(const std::string& address) {
    CURLU* parsed = curl_url();
    char* scheme = nullptr;
    const bool ok = parsed != nullptr &&
                    curl_url_set(parsed, CURLUPART_URL, address.c_str(), 0) == CURLUE_OK &&
                    curl_url_get(parsed, CURLUPART_SCHEME, &scheme, 0) == CURLUE_OK &&
                    (std::string(scheme) == "http" || std::string(scheme) == "https");
    curl_free(scheme);
    curl_url_cleanup(parsed);
    return ok;
}

// "MoravelLibrary/19.0.4.2200": the add-on's name and the version word of its identity line.
std::string UserAgent() {
    const std::string line = kAddon_VersionLine;
    const size_t start = line.find(' ') + 1;
    return std::string(sett_ADDON_NAME) + "/" + line.substr(start, line.find(' ', start) - start);
}

// curl's global state: set up with the first transfer, released with the add-on. An add-on unloaded
// while a transfer runs ends it without a word and lets the loop finish closing its handles.
struct CurlLibrary {
    bool initialized = false;
    bool Use() { return initialized || (initialized = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK); }
    ~CurlLibrary() {
        for (URLDownloadParams* params : std::set<URLDownloadParams*>(sTransfers)) {
            params->callback = nullptr;
            EndTransfer(params, Outcome::Failed);
        }
        for (int turn = 0; turn < 10 && !sTransfers.empty(); ++turn)
            uv_run(uv_default_loop(), UV_RUN_NOWAIT);
        if (initialized)
            curl_global_cleanup();
    }
} sCurl;

bool Configure(URLDownloadParams* params, const std::string& address, const std::string& userAgent) {
    CURL* easy = params->easy;
    return curl_easy_setopt(easy, CURLOPT_URL, address.c_str()) == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https") == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https") == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L) == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_MAXREDIRS, kMaxRedirections) == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_USERAGENT, userAgent.c_str()) == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L) == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L) == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L) == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_BUFFERSIZE, static_cast<long>(kBlockBytes)) == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, OnHeader) == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_HEADERDATA, params) == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, OnBody) == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_WRITEDATA, params) == CURLE_OK &&
           curl_multi_setopt(params->multi, CURLMOPT_SOCKETFUNCTION, OnSocketRequest) == CURLM_OK &&
           curl_multi_setopt(params->multi, CURLMOPT_SOCKETDATA, params) == CURLM_OK &&
           curl_multi_setopt(params->multi, CURLMOPT_TIMERFUNCTION, OnTimerRequest) == CURLM_OK &&
           curl_multi_setopt(params->multi, CURLMOPT_TIMERDATA, params) == CURLM_OK;
}

} // namespace

bool XN_General::URLDownload(const XN_String& url, const XN_Location& destination, XN_URL_Callback callback,
                             void* userData) {
    XN_CString utf8 = url.ToCStr(XN_String::Encoding_UTF8);
    std::string address;
    if (url.IsEmpty() || utf8.Get() == nullptr || !Reescape(utf8.Get(), &address) || !IsWebAddress(address) ||
        !sCurl.Use())
        return false;
    auto params = std::make_unique<URLDownloadParams>();
    params->callback = callback;
    params->userData = userData;
    params->destination = destination;
    params->easy = curl_easy_init();
    params->multi = curl_multi_init();
    const std::string userAgent = UserAgent();
    if (params->easy == nullptr || params->multi == nullptr || !Configure(params.get(), address, userAgent)) {
        curl_easy_cleanup(params->easy);
        curl_multi_cleanup(params->multi);
        return false;
    }
    uv_loop_t* loop = uv_default_loop();
    uv_timer_init(loop, &params->limit);
    uv_timer_init(loop, &params->curlTimer);
    params->limit.data = params->curlTimer.data = params.get();
    params->openHandles = 2;
    URLDownloadParams* started = params.release();
    sTransfers.insert(started);
    uv_timer_start(&started->limit, OnTimeLimit, kTimeLimitMs, 0);
    if (curl_multi_add_handle(started->multi, started->easy) != CURLM_OK) {
        started->callback = nullptr;
        EndTransfer(started, Outcome::Failed);
        return false;
    }
    return true;
}
