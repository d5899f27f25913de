// The validator's catalogue: every check, registered in the one table at the end of this file.
// Each runs in a child process of its own (Validate.cpp) and reports through its Reporter.
#include "Validate.hpp"
#include "Walker.hpp"

#include "ACAPinc.h"
#include "achost/ElfFile.hpp"
#include "achost/Faults.hpp"
#include "achost/Probes.hpp"
#include "achost/UpdateServer.hpp"

#include <arpa/inet.h>
#include <malloc.h>
#include <netinet/in.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ACHOST_ADDRESS_SANITIZER 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define ACHOST_ADDRESS_SANITIZER 1
#endif

#if defined(ACHOST_ADDRESS_SANITIZER)
#include <sanitizer/lsan_interface.h>
// The sanitizer's allocator replaces malloc's: its count of live bytes stands in for mallinfo2.
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace achost::validate {

std::string ExchangeHalves(std::string bytes) {
    for (char& c : bytes)
        c = static_cast<char>(((static_cast<unsigned char>(c) & 0x0F) << 4) |
                              (static_cast<unsigned char>(c) >> 4));
    return bytes;
}

std::vector<SettingsRecord> Records(const std::string& image) {
    std::vector<SettingsRecord> records;
    for (size_t at = 0; at < image.size();) {
        size_t end = image.find('\n', at);
        end = end == std::string::npos ? image.size() : end + 1;
        const std::string line = image.substr(at, end - at);
        if (line[0] == '#' && !records.empty())
            records.back().bytes += line;
        else
            records.push_back(
                {line.substr(line[0] == '$' ? 1 : 0, line.find(": ") - (line[0] == '$' ? 1 : 0)), line});
        at = end;
    }
    return records;
}

const char* const kLanguages[kLanguageCount] = {"ita", "int", "fra", "ger", "spa", "jap", "rus"};

bool StoreLanguage(const std::string& folder, const std::string& addonName, int language,
                   std::string* error) {
    API_ServerApplicationInfo release;
    ACAPI_GetReleaseNumber(&release);
    const std::string path = folder + "/" + addonName + "_" + std::to_string(release.mainVersion) + "0.cfg";
    std::string image;
    if (std::ifstream in{path, std::ios::binary})
        image = ExchangeHalves(std::string(std::istreambuf_iterator<char>(in), {}));
    std::string kept;
    for (const SettingsRecord& record : Records(image))
        kept += record.key == "Language_str" ? "" : record.bytes;
    kept += std::string("$Language_str: ") + kLanguages[language] + "\n";
    std::error_code ignored; // a folder that cannot be made fails the write below
    std::filesystem::create_directories(folder, ignored);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << ExchangeHalves(kept);
    if (out.flush())
        return true;
    *error = "cannot store the language in " + path + ": " + std::strerror(errno);
    return false;
}

namespace {

namespace fs = std::filesystem;

const char* const kEntryPoints[] = {"CheckEnvironment", "FreeData", "Initialize", "RegisterInterface"};

// Bytes the process has allocated on the heap and not released.
long long HeapInUse() {
#if defined(ACHOST_ADDRESS_SANITIZER)
    return static_cast<long long>(__sanitizer_get_current_allocated_bytes());
#else
    return static_cast<long long>(mallinfo2().uordblks);
#endif
}

#if defined(ACHOST_ADDRESS_SANITIZER)
// What LeakSanitizer finds allocated and unreachable now: its summary and the caller of the
// allocation of the first leak, as "512 byte(s) leaked in 1 allocation(s), by code unloaded since";
// "" when nothing leaked. Its report is read back from a file its output goes to meanwhile.
std::string UnreachableMemory() {
    std::FILE* capture = std::tmpfile();
    const int saved = dup(STDERR_FILENO);
    std::fflush(stderr);
    if (capture != nullptr)
        dup2(fileno(capture), STDERR_FILENO);
    const bool leaked = __lsan_do_recoverable_leak_check() != 0;
    dup2(saved, STDERR_FILENO);
    close(saved);
    std::string report;
    if (capture != nullptr) {
        std::rewind(capture);
        char buffer[4096];
        for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, capture)) > 0;)
            report.append(buffer, n);
        std::fclose(capture);
    }
    if (!leaked)
        return "";
    std::istringstream lines(report);
    std::string summary = "memory leaked", caller;
    for (std::string line; std::getline(lines, line);) {
        const size_t at = line.find("SUMMARY: AddressSanitizer: ");
        if (at != std::string::npos)
            summary = line.substr(at + 27, line.find_last_not_of('.') - at - 26);
        // Frame #0 is the allocator; #1, "#1 0x7f0012345678 in Function file:line", called it. The
        // code of an unloaded library has no name left (or only an offset into its file, depending
        // on what the symbolizer kept): either way, it is named alike in every run.
        const size_t in = line.find(" in ");
        if (caller.empty() && line.compare(0, 7, "    #1 ") == 0)
            caller = in != std::string::npos ? line.substr(in + 1) : "by code unloaded since";
    }
    return summary + (caller.empty() ? "" : ", " + caller);
}
#endif

// A host whose every wrong call from the add-on fails the check, naming the step it happened in.
// While `tolerant` is set, wrong calls are only noted (the check provokes them on purpose).
struct CheckedHost {
    explicit CheckedHost(CheckContext& context) : context(context), host(Options()) {}
    HostOptions Options() {
        HostOptions options;
        options.onViolation = [this](const std::string& message) {
            if (tolerant)
                ++tolerated;
            else
                this->context.report.FailHere(message);
        };
        return options;
    }
    bool Start() {
        std::string error;
        context.report.Step("loading " + context.options.addon);
        if (host.Start(context.options.addon, &error))
            return true;
        context.report.Fail(error);
        return false;
    }
    CheckContext& context;
    bool tolerant = false;
    int tolerated = 0;
    Host host;
};

std::vector<std::string> RegisteredCommands(const Host& host) {
    std::vector<std::string> lines;
    if (const Menu* menu = host.RegisteredMenu())
        for (size_t i = 0; i < menu->items.size(); ++i)
            if ((menu->items[i].flags & API_MenuItemDisabled) == 0)
                lines.push_back("menu " + std::to_string(menu->resID) + " " + std::to_string(i + 1));
    return lines;
}

// Fails when memory handles the add-on allocated are still alive, or BM calls were made with dead
// handles.
void CheckHandles(CheckContext& context, long baseline, const std::string& when) {
    const long live = LiveHandleCount() - baseline;
    if (live > 0)
        context.report.Fail(std::to_string(live) + " memory handle" + (live == 1 ? " was" : "s were") +
                            " still allocated " + when + " (a leak)");
    if (HandleMisuseCount() > 0)
        context.report.Fail(std::to_string(HandleMisuseCount()) +
                            " memory handle call(s) with a handle that is not alive " + when);
}

// The files under `folder` with their contents.
std::map<std::string, std::string> Snapshot(const std::string& folder) {
    std::map<std::string, std::string> files;
    std::error_code error;
    for (fs::recursive_directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        if (!it->is_regular_file(error))
            continue;
        std::ifstream in(it->path(), std::ios::binary);
        files[fs::relative(it->path(), folder, error).string()] =
            std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    return files;
}

void Restore(const std::string& folder, const std::map<std::string, std::string>& files) {
    std::error_code error;
    fs::remove_all(folder, error);
    fs::create_directories(folder, error);
    for (const auto& file : files) {
        fs::create_directories((fs::path(folder) / file.first).parent_path(), error);
        std::ofstream(fs::path(folder) / file.first, std::ios::binary) << file.second;
    }
}

std::string SharedFolderOf(const CheckContext& context) {
    return context.work + "/Shared";
}

// What a load shows a person: the menus, and the dialogs and alerts one command brings up.
std::string Fingerprint(const Host& host, const Walker& walker) {
    std::ostringstream out;
    for (const Menu* menu : host.Menus())
        WriteMenu(out, *menu);
    for (const auto& seen : walker.dialogsSeen)
        out << "dialog " << seen.first << " opened " << seen.second << " times\n";
    out << walker.alertsSeen << " alerts\n";
    return out.str();
}

// The first line where two fingerprints differ, as "X where Y was".
std::string FirstDifference(const std::string& now, const std::string& first) {
    std::istringstream a(now), b(first);
    std::string lineA, lineB;
    while (true) {
        const bool moreA = static_cast<bool>(std::getline(a, lineA));
        const bool moreB = static_cast<bool>(std::getline(b, lineB));
        if (!moreA && !moreB)
            return "";
        if (!moreA || !moreB || lineA != lineB)
            return Quoted(moreA ? lineA : "(nothing)") + " where the first load showed " +
                   Quoted(moreB ? lineB : "(nothing)");
    }
}

// Checks ------------------------------------------------------------------------------------------

void CheckExports(CheckContext& context) {
    ElfFile file;
    std::string error;
    context.report.Step("reading the dynamic symbol table");
    if (!file.Open(context.options.addon, &error)) {
        context.report.Fail(error);
        return;
    }
    const std::vector<std::string> exports = file.Exports();
    std::string missing, extra;
    for (const char* entry : kEntryPoints)
        if (!std::binary_search(exports.begin(), exports.end(), std::string(entry)))
            missing += (missing.empty() ? "" : ", ") + std::string(entry);
    // A library built without an export map exports hundreds of names: the first few say enough.
    const int kShown = 10;
    int extras = 0;
    for (const std::string& name : exports)
        if (std::find_if(std::begin(kEntryPoints), std::end(kEntryPoints),
                         [&](const char* entry) { return name == entry; }) == std::end(kEntryPoints) &&
            ++extras <= kShown)
            extra += (extra.empty() ? "" : ", ") + name;
    if (extras > kShown)
        extra += " and " + std::to_string(extras - kShown) + " more";
    if (!missing.empty())
        context.report.Fail("does not export " + missing);
    if (!extra.empty())
        context.report.Fail("exports more than its four entry points: " + extra);
    context.report.Note(std::to_string(exports.size()) + " exports");
}

void CheckProtocol(CheckContext& context) {
    CheckedHost checked(context);
    Host& host = checked.host;
    const long handles = LiveHandleCount();
    // In order: every call the add-on makes from each entry point must be allowed there.
    if (!checked.Start())
        return;
    const std::vector<std::string> commands = RegisteredCommands(host);
    {
        Walker walker(context.report);
        walker.inspect = false;
        if (!commands.empty())
            walker.idle.push_back(commands.front());
        walker.idle.push_back("reload");
        context.report.Step("a command, a reload and a quit in order");
        RunSession(host, walker);
        host.Quit();
    }
    // Out of order: each call with every command of the registered menu (the first at low strictness).
    const size_t tried =
        context.options.strictness >= 6 ? commands.size() : std::min<size_t>(1, commands.size());
    int made = 0;
    for (WrongOrderCall call : {WrongOrderCall::FreeDataTwice, WrongOrderCall::CommandAfterUnload,
                                WrongOrderCall::CommandBeforeInitialize}) {
        const bool command = call != WrongOrderCall::FreeDataTwice;
        for (size_t i = 0; i < (command ? tried : 1); ++i) {
            if (!checked.Start())
                return;
            const Int32 item =
                command ? static_cast<Int32>(std::stoi(commands[i].substr(commands[i].rfind(' ') + 1))) : 1;
            context.report.Step(std::string(WrongOrderCallName(call)) +
                                (command ? " (item " + std::to_string(item) + ")" : ""));
            checked.tolerant = true;
            std::string error;
            if (!CallOutOfOrder(host, call, item, &error))
                context.report.Note(std::string(WrongOrderCallName(call)) + " not made: " + error);
            else
                ++made;
            checked.tolerant = false;
        }
    }
    // Afterwards a normal run works as before.
    if (!checked.Start())
        return;
    context.report.Step("a command after the wrong-order calls");
    Walker walker(context.report);
    walker.inspect = false;
    if (!commands.empty())
        walker.idle.push_back(commands.front());
    RunSession(host, walker);
    host.Quit();
    CheckHandles(context, handles, "after the last unload");
    context.report.Note(std::to_string(made) + " wrong-order calls answered");
    if (checked.tolerated > 0)
        context.report.Note(std::to_string(checked.tolerated) + " host calls refused meanwhile");
}

void CheckLifecycle(CheckContext& context) {
    CheckedHost checked(context);
    Host& host = checked.host;
    // Enough cycles that those of the second half come after the first loads have filled the caches.
    const int cycles = std::max(12, 4 * context.options.strictness);
    const std::string shared = SharedFolderOf(context);
    const auto files = Snapshot(shared);
    const long handles = LiveHandleCount();
    std::string first;
    std::vector<long long> heap; // in use after each cycle
    for (int cycle = 1; cycle <= cycles; ++cycle) {
        // Every load starts from the same files, so any difference comes from state kept in memory.
        Restore(shared, files);
        if (!checked.Start())
            return;
        Walker walker(context.report);
        walker.inspect = cycle == 1;
        const std::vector<std::string> commands = RegisteredCommands(host);
        if (!commands.empty())
            walker.idle.push_back(commands.front());
        context.report.Step("load " + std::to_string(cycle) + " of " + std::to_string(cycles));
        RunSession(host, walker);
        const std::string fingerprint = Fingerprint(host, walker);
        host.Quit();
        const long live = LiveHandleCount() - handles;
        if (live > 0 || HandleMisuseCount() > 0) {
            CheckHandles(context, handles, "after " + std::to_string(cycle) + " load/unload cycles");
            return;
        }
        if (cycle == 1)
            first = fingerprint;
        else if (fingerprint != first) {
            context.report.Fail("globals not reset: load " + std::to_string(cycle) + " shows " +
                                FirstDifference(fingerprint, first));
            return;
        }
        heap.push_back(HeapInUse());
    }
    // The first loads fill the host's caches. Over the second half the heap must not grow much in
    // all, nor, in a normal build, grow in a typical cycle (the median one: the host's own noise is
    // a few hundred bytes either way) by about what a leak of 512 bytes a load leaves. The
    // sanitizer's allocator counts more noise than that; LeakSanitizer finds such a leak instead.
    const int from = cycles / 2 + 1;
    std::vector<long long> growths;
    for (int cycle = from; cycle <= cycles; ++cycle)
        growths.push_back(heap[cycle - 1] - heap[cycle - 2]);
    std::sort(growths.begin(), growths.end());
    const long long growth = heap.back() - heap[from - 2], typical = growths[growths.size() / 2];
#if defined(ACHOST_ADDRESS_SANITIZER)
    const bool steady = false;
#else
    const bool steady = typical > 384;
#endif
    if (growth > 64 * 1024 || steady)
        context.report.Fail("the heap grew by " + std::to_string(growth) + " bytes over loads " +
                            std::to_string(from) + " to " + std::to_string(cycles) + " (" +
                            std::to_string(typical) + " in the median load/unload cycle)");
#if defined(ACHOST_ADDRESS_SANITIZER)
    // Once the library is gone, memory it allocated and nothing reaches is lost, however small.
    const std::string leak = UnreachableMemory();
    if (!leak.empty())
        context.report.Fail("LeakSanitizer found a leak after the last unload: " + leak);
#endif
    context.report.Note(std::to_string(cycles) + " load/unload cycles");
}

// A network that answers: an HTTP server on this machine that every request of the add-on reaches
// (through http_proxy) and that serves an empty folder, so every file is a 404 page. What an add-on
// shows after a transfer that completes is then seen too.
struct AnsweringNetwork {
    explicit AnsweringNetwork(CheckContext& context) {
        const std::string folder = context.work + "/served";
        std::error_code ignored;
        fs::create_directories(folder, ignored);
        std::string error;
        if (server.Start(folder, &error))
            UseHttpProxy(server.Address());
        else
            context.report.Note("no answering network: " + error);
    }
    UpdateServer server;
};

void CheckMenus(CheckContext& context) {
    CheckedHost checked(context);
    Host& host = checked.host;
    const long handles = LiveHandleCount();
    AnsweringNetwork network(context);
    if (!checked.Start())
        return;
    Walker walker(context.report);
    const std::vector<std::string> every = EveryCommand(host);
    // One session per command, so that a crash or a hang names the command.
    for (const std::string& line : every) {
        walker.idle = CommandAndItsTransfers(line);
        context.report.Step(line);
        RunSession(host, walker);
    }
    int firstCommands = 0, languages = 0;
    if (context.options.strictness >= 4) {
        // The first command of a host run takes paths the later ones do not.
        for (const std::string& line : RegisteredCommands(host)) {
            std::string error;
            context.report.Step(line + " as the first command of a run");
            if (!host.Reload(&error)) {
                context.report.Fail(error);
                return;
            }
            walker.idle = CommandAndItsTransfers(line);
            RunSession(host, walker);
            ++firstCommands;
        }
        // Every command again in each language the suite knows, from a start in that language.
        for (; languages < kLanguageCount; ++languages) {
            const std::string name = host.AddonName();
            host.Quit();
            std::string error;
            if (!StoreLanguage(SharedFolderOf(context), name, languages, &error) ||
                !host.Start(context.options.addon, &error)) {
                context.report.Fail(error);
                return;
            }
            Walker inLanguage(context.report);
            inLanguage.where = std::string("in ") + kLanguages[languages];
            for (const std::string& line : EveryCommand(host)) {
                inLanguage.idle = CommandAndItsTransfers(line);
                context.report.Step(line + " " + inLanguage.where);
                RunSession(host, inLanguage);
            }
        }
    }
    host.Quit();
    CheckHandles(context, handles, "after the add-on was unloaded");
    context.report.Note(std::to_string(every.size()) + " commands, " + std::to_string(firstCommands) +
                        " first commands, " + std::to_string(languages) +
                        " languages, dialogs: " + std::to_string(walker.dialogsSeen.size()));
}

void CheckDialogs(CheckContext& context) {
    CheckedHost checked(context);
    Host& host = checked.host;
    const long handles = LiveHandleCount();
    AnsweringNetwork network(context);
    if (!checked.Start())
        return;
    // Which command opens which dialog, and how each can be closed.
    Walker finder(context.report);
    std::map<short, std::vector<std::string>> paths;
    finder.onDialog = [&](const Host&, const Dialog& dialog) {
        if (paths.count(dialog.resID) == 0) {
            std::vector<std::string> found;
            for (const std::string& line : DialogActions(dialog))
                if (line.compare(0, 6, "click ") == 0 || line == "close")
                    found.push_back(line);
            paths[dialog.resID] = found;
        }
        return std::string();
    };
    for (const std::string& line : EveryCommand(host)) {
        finder.idle = CommandAndItsTransfers(line);
        context.report.Step("looking for dialogs: " + line);
        RunSession(host, finder);
    }
    const int openings = context.options.strictness >= 5 ? 100 : 20 * context.options.strictness;
    int closed = 0;
    for (const auto& opened : finder.openers) {
        const short resID = opened.first;
        if (opened.second.empty() || paths.count(resID) == 0)
            continue; // opened by another dialog: closed whenever that one's buttons run
        for (const std::string& path : paths[resID]) {
            Walker walker(context.report);
            walker.inspect = false;
            short acted = 0;
            bool closes = true;
            walker.onDialog = [&](const Host&, const Dialog& dialog) {
                if (dialog.resID != resID)
                    return std::string();
                if (dialog.id == acted) { // still open after the path: not a way to close it
                    closes = false;
                    return std::string();
                }
                acted = dialog.id;
                return path;
            };
            context.report.Step("dialog " + std::to_string(resID) + " opened by " + opened.second +
                                ", closed by " + path);
            for (int i = 0; i < openings && closes; ++i) {
                walker.idle = CommandAndItsTransfers(opened.second);
                RunSession(host, walker);
                if (host.FrontDialog() != nullptr && host.FrontDialog()->resID == resID &&
                    host.FrontDialog()->kind != DialogKind::Modal) {
                    walker.idle.assign(1, "close"); // a modeless dialog: its path was tried already
                    walker.onDialog = nullptr;
                }
                closed += closes ? 1 : 0;
            }
        }
    }
    host.Quit();
    CheckHandles(context, handles, "after the add-on was unloaded");
    context.report.Note("dialogs: " + std::to_string(finder.openers.size()) +
                        ", openings closed: " + std::to_string(closed));
}

// A local port that takes connections and never answers, as a slow or stuck network does. The
// socket stays open for the life of the check's process.
int SilentPort() {
    return LoopbackPort(true);
}

// A person acting at random: commands, clicks, list rows, answers to file dialogs.
void RandomPerson(Walker& walker, std::mt19937_64& random, const std::string& work) {
    walker.onFile = [&random, work](const Host&, const FileRequest& request) {
        if (random() % 3 == 0)
            return "answer " + request.kind + " cancel";
        return "answer " + request.kind + " " + Quoted(work + "/answer-" + std::to_string(random() % 4));
    };
    walker.onIdle = [&random](const Host& host) {
        const Dialog* dialog = host.FrontDialog();
        const std::vector<std::string> commands = EveryCommand(host);
        if (dialog != nullptr && random() % 2 == 0) {
            const std::vector<std::string> lines = DialogActions(*dialog);
            return lines[random() % lines.size()];
        }
        if (commands.empty() || random() % 20 == 0)
            return std::string("reload");
        return commands[random() % commands.size()];
    };
    walker.onDialog = [&random](const Host&, const Dialog& dialog) {
        const std::vector<std::string> lines = DialogActions(dialog);
        return lines[random() % lines.size()];
    };
}

// A file named as temporary ("*.tmp": a download in progress, a save under way) is the add-on's to
// remove; its going is no loss.
bool IsTemporaryName(const std::string& name) {
    return name.size() >= 4 && strcasecmp(name.c_str() + name.size() - 4, ".tmp") == 0;
}

void CheckSessions(CheckContext& context) {
    CheckedHost checked(context);
    Host& host = checked.host;
    std::mt19937_64 random(context.seed);
    const int sessions = 2 * context.options.strictness;
    const long length = 20 + 10 * context.options.strictness;
    const long handles = LiveHandleCount();
    const int closed = ClosedPort(), silent = SilentPort();
    AnsweringNetwork answering(context);
    const std::string shared = SharedFolderOf(context);
    std::map<std::string, std::string> kept;
    int faults = 0;
    for (int session = 0; session <= sessions; ++session) {
        // Session 0 runs without faults and leaves the add-on's files; no later session may lose one.
        std::string fault = "no fault";
        ClearFaults();
        const unsigned kind = session == 0 ? 0 : static_cast<unsigned>(random() % 4);
        const int nth = 1 + static_cast<int>(random() % 40);
        if (kind == 1) {
            FailAllocation(nth);
            fault = "memory handle allocation " + std::to_string(nth) + " failing";
        } else if (kind == 2) {
            FailReallocation(nth);
            MoveBlocksOnEveryReallocation(true);
            fault = "memory handle reallocation " + std::to_string(nth) + " failing, blocks moving";
        } else if (kind == 3) {
            static const FileOperation kOperations[] = {
                FileOperation::FileStatus,       FileOperation::FileOpen,
                FileOperation::FileRead,         FileOperation::FileWrite,
                FileOperation::FileSeek,         FileOperation::FileGetDataLength,
                FileOperation::FileClose,        FileOperation::FolderStatus,
                FileOperation::FolderEnumerate,  FileOperation::FolderGetType,
                FileOperation::FolderCreateFile, FileOperation::LocationToPath};
            static const GSErrCode kCodes[] = {GSErrCode(0x81010100), GSErrCode(0x81010102),
                                               GSErrCode(0x81010103), GSErrCode(0x81000100)};
            const size_t operation = random() % (sizeof kOperations / sizeof kOperations[0]);
            const size_t code = random() % 4;
            const int call = 1 + nth % 8;
            FailFileOperation(kOperations[operation], kCodes[code], call);
            fault = "file operation " + std::to_string(operation) + " call " + std::to_string(call) +
                    " failing with error " + std::to_string(code);
        }
        static const char* const kNetworks[] = {"down", "silent", "answering"};
        const unsigned network = static_cast<unsigned>(random() % 3);
        if (network == 2)
            UseHttpProxy(answering.server.Address());
        else
            UseProxy(network == 1 ? silent : closed);
        faults += kind != 0 ? 1 : 0;
        context.report.Step("session " + std::to_string(session) + " of " + std::to_string(sessions) + ", " +
                            fault + ", network " + kNetworks[network]);
        std::string error;
        if (!host.Start(context.options.addon, &error)) {
            if (kind == 0) {
                context.report.Fail(error);
                return;
            }
            context.report.Note("a start refused under a fault");
            continue;
        }
        Walker walker(context.report);
        walker.budget = length;
        RandomPerson(walker, random, context.work);
        RunSession(host, walker);
        host.Quit();
        ClearFaults();
        const long live = LiveHandleCount() - handles;
        if (live > 0 || HandleMisuseCount() > 0) {
            CheckHandles(context, handles, "after session " + std::to_string(session) + " (" + fault + ")");
            return;
        }
        const auto now = Snapshot(shared);
        for (const auto& file : kept)
            if (now.count(file.first) == 0 || (now.at(file.first).empty() && !file.second.empty())) {
                context.report.Fail("session " + std::to_string(session) + " (" + fault + ") lost " +
                                    file.first);
                return;
            }
        if (session == 0)
            for (const auto& file : now)
                if (!IsTemporaryName(file.first))
                    kept.insert(file);
    }
    context.report.Note(std::to_string(sessions) + " sessions, " + std::to_string(faults) + " with faults");
}

// The shared settings file -----------------------------------------------------------------------

// Other add-ons' records, with the bytes a careless rewrite would change.
std::string ForeignImage(std::mt19937_64& random, int extra) {
    std::string image = "$Tessaro_Language_str: fra\n"
                        "$Tessaro_LastFolder: /home/utente/Progetti/Caff\xe8 \xabnuovo\xbb\n"
                        "$Tessaro_Notes: first line\r#second line\n#third: line\n"
                        "$Tessaro_Empty: \n"
                        "$Vandel_Colon: a: b: c\n"
                        "$Vandel_Spaces:   padded   \n";
    for (int i = 0; i < extra; ++i) {
        std::string value;
        for (int n = static_cast<int>(random() % 40); n > 0; --n)
            value += static_cast<char>(0x20 + random() % 0xDF);
        value.erase(std::remove_if(value.begin(), value.end(), [](char c) { return c == '\x7f'; }),
                    value.end());
        image += "$Other_" + std::to_string(i) + ": " + value + "\n";
    }
    return image;
}

void CheckSettings(CheckContext& context) {
    CheckedHost checked(context);
    Host& host = checked.host;
    std::mt19937_64 random(context.seed);
    const std::string path = SharedFolderOf(context) + "/" + context.options.sharedSettings;
    const std::string before = ForeignImage(random, 2 * context.options.strictness);
    std::set<std::string> foreign;
    for (const SettingsRecord& record : Records(before))
        foreign.insert(record.key);
    fs::create_directories(SharedFolderOf(context));
    std::ofstream(path, std::ios::binary) << ExchangeHalves(before);
    // Dated long ago, so that any rewrite shows even when it leaves the same bytes.
    const auto written = fs::file_time_type::clock::now() - std::chrono::hours(24 * 365);
    std::error_code ignored;
    fs::last_write_time(path, written, ignored);
    const int runs = 1 + context.options.strictness / 3;
    for (int run = 1; run <= runs; ++run) {
        if (!checked.Start())
            return;
        Walker walker(context.report);
        walker.inspect = false;
        walker.budget = 20 * context.options.strictness;
        RandomPerson(walker, random, context.work);
        context.report.Step("session " + std::to_string(run) + " of " + std::to_string(runs));
        RunSession(host, walker);
        host.Quit();
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        context.report.Fail("the shared settings file " + context.options.sharedSettings + " was deleted");
        return;
    }
    const std::string after = ExchangeHalves(std::string(std::istreambuf_iterator<char>(in), {}));
    std::string kept;
    std::set<std::string> own;
    for (const SettingsRecord& record : Records(after)) {
        if (foreign.count(record.key) != 0)
            kept += record.bytes;
        else
            own.insert(record.key);
    }
    if (kept != before) {
        const auto was = Records(before), is = Records(kept);
        for (size_t i = 0; i < was.size(); ++i) {
            if (i < is.size() && is[i].bytes == was[i].bytes)
                continue;
            const bool lost = std::none_of(is.begin(), is.end(),
                                           [&](const SettingsRecord& r) { return r.key == was[i].key; });
            context.report.Fail("the shared settings file " + context.options.sharedSettings + " " +
                                (lost ? "lost the record " + Quoted(was[i].key)
                                      : "changed the record " + Quoted(was[i].bytes) + " to " +
                                            Quoted(i < is.size() ? is[i].bytes : "")));
            return;
        }
        context.report.Fail("the shared settings file " + context.options.sharedSettings +
                            " changed beyond its records");
    }
    std::string keys;
    for (const std::string& key : own)
        keys += (keys.empty() ? "" : " ") + key;
    context.report.Note(std::to_string(foreign.size()) + " foreign records kept" +
                        (keys.empty() ? std::string() : ", the add-on's own: " + keys));
    if (after == before && fs::last_write_time(path, ignored) == written)
        context.report.Note("the add-on never rewrote " + context.options.sharedSettings +
                            ": nothing was tested");
}

} // namespace

const std::vector<Check>& Catalogue() {
    static const std::vector<Check> kChecks = {
        {"exports", "the four entry points are exported, and nothing else", CheckExports},
        {"protocol", "entry points in order; wrong-order calls answered without a crash", CheckProtocol},
        {"lifecycle", "load/unload cycles leave no handle, heap or mapping behind; globals start afresh",
         CheckLifecycle},
        {"menus", "every command of every menu; no missing string and no empty item shown", CheckMenus},
        {"dialogs", "each dialog opened and closed many times through every way to close it", CheckDialogs},
        {"sessions",
         "random sessions under failing files and memory, the network down, silent or answering: no crash, "
         "hang, leak or lost file",
         CheckSessions},
        {"settings", "the shared settings file keeps every other add-on's record byte for byte",
         CheckSettings},
    };
    return kChecks;
}

} // namespace achost::validate
