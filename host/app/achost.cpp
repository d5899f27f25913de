// achost: loads an add-on into the host and lets a person, or a script, use it (see kHelp).
#include "Render.hpp"
#include "Validate.hpp"
#include "achost/FrontEnd.hpp"
#include "achost/SharedFolder.hpp"
#include "achost/UpdateServer.hpp"

#include <histedit.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <functional>
#include <iostream>
#include <optional>

namespace {

const char kUsage[] =
    "usage: achost [--shared-folder DIR] [--host-kind N] [--command DEVID:LOCALID:CMD[:VERSION]]...\n"
    "              [--update-folder DIR | --no-update-server] [--project FILE] [--engine NAME]...\n"
    "              [--library DIR]... [--missing NAME]... [--launch] [--script FILE] [ADDON]\n"
    "       achost --list-menus [ADDON]\n"
    "       achost --help\n";

const char kHelp[] =
    "\n"
    "Loads the add-on ADDON (default: MoravelLibrary.so beside achost) into the host and runs a session:\n"
    "on the terminal (type help for the actions), or from a script file with --script.\n"
    "\n"
    "  --shared-folder DIR   the host's shared folder (default $XDG_DATA_HOME/achost/Shared)\n"
    "  --host-kind N         the kind of host application the add-on is told about (default 0)\n"
    "  --command DEVID:LOCALID:CMD[:VERSION]\n"
    "                        another add-on, identified by its developer and local IDs (decimal), answers\n"
    "                        the four-character command CMD up to VERSION (default 1), as\n"
    "                        ACAPI_Command_Test reports; repeatable. In a script: command DEVID LOCALID "
    "\"CMD\"\n"
    "  --project FILE        the open project's file (default: an untitled project); in a script:\n"
    "                        project \"FILE\" or project untitled\n"
    "  --engine NAME         a rendering engine's menu name, numbered in the order given, the first\n"
    "                        current; repeatable (default: \"Internal Engine\", \"Sketch Engine\")\n"
    "  --library DIR         a library folder, active in the order given; repeatable (default: the\n"
    "                        folder MVL_Library beside the add-on, when there is one). In a script:\n"
    "                        library \"DIR\"; expect libraries \"DIR\"... checks them in order; at the\n"
    "                        terminal, libraries lists them\n"
    "  --missing NAME        a library part the open project uses that no library holds; repeatable.\n"
    "                        In a script: missing \"NAME\"\n"
    "  --launch              hand what the add-on opens to xdg-open in a script session too (a\n"
    "                        terminal session always does; a script only records it: expect opened)\n"
    "  --script FILE         run the actions and expectations of FILE, one per line, as they are read\n"
    "                        (FILE - or /dev/stdin: standard input, which may be a pipe)\n"
    "  --update-folder DIR   the folder the demo update server serves under /update_plugins/ (default:\n"
    "                        update_plugins beside achost)\n"
    "  --no-update-server    start no update server and leave http_proxy as it is\n"
    "  --list-menus          print every menu the add-on defined and stop\n"
    "\n"
    "The demo update server listens on 127.0.0.1 at a free port; achost points http_proxy at it (and\n"
    "clears no_proxy), so the add-on's requests to its update server reach it.\n"
    "\n"
    "achost validate [--strictness 1..10] [--seed N] [--repeat N] [--timeout S] [--json FILE] [--junit "
    "FILE]\n"
    "                [--check NAME]... ADDON\n"
    "                        put ADDON through named checks, each in a process of its own; a failure\n"
    "                        prints the command that replays it (achost validate --list names the checks)\n"
    "achost render RESID [--lang N] [--script FILE] [--check-fit] -o FILE.png [ADDON]\n"
    "                        draw dialog RESID (its 'GDLG' resource) as PNG: as the command that opens it\n"
    "                        shows it, found by trying every command, or as the actions of FILE leave it;\n"
    "                        in language N (0 to 6 or ita int fra ger spa jap rus: stored in the add-on's\n"
    "                        own settings file in a shared folder of the run's own); --check-fit fails\n"
    "                        (exit code 1) when a text does not fit its item, naming each\n"
    "\n"
    "Exit codes: 0 success, 1 a script expectation failed, the add-on called the host wrongly or (render\n"
    "--check-fit) a text does not fit, 2 bad arguments, an add-on that cannot run, a malformed script, a\n"
    "dialog that cannot be drawn or output that cannot be written, 3 an exception escaped the add-on. An\n"
    "add-on that crashes is named with the call it was in, and the signal ends achost.\n";

struct Arguments {
    std::string addon, script, sharedFolder, updateFolder;
    bool updateServer = true;
    bool listMenus = false;
    bool help = false;
    std::vector<achost::DeclaredCommand> commands;
    API_ApplicationTypeID hostKind = APIAppl_ArchiCADID;
    std::string project;
    std::vector<std::string> engines;
    std::vector<std::string> libraries, missing;
    bool launch = false;
};

// `path` from the working directory when it is relative.
std::string Absolute(const std::string& path) {
    char cwd[4096];
    return path.empty() || path[0] == '/' || getcwd(cwd, sizeof cwd) == nullptr
               ? path
               : std::string(cwd) + "/" + path;
}

std::string DefaultAddon() {
    char self[4096] = {};
    const ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    std::string path = n > 0 ? std::string(self, static_cast<size_t>(n)) : std::string();
    const size_t slash = path.rfind('/');
    return (slash == std::string::npos ? std::string(".") : path.substr(0, slash)) + "/MoravelLibrary.so";
}

// A decimal number from 0 to 2^31 - 1, nothing else.
bool ParseKind(const std::string& text, API_ApplicationTypeID* kind) {
    if (text.empty() || text.size() > 10 || text.find_first_not_of("0123456789") != std::string::npos)
        return false;
    const long long value = std::stoll(text);
    *kind = static_cast<API_ApplicationTypeID>(value);
    return value <= 2147483647;
}

// False with the reason when the arguments do not make one session.
bool ParseArguments(int argc, char** argv, Arguments* args, std::string* error) {
    bool script = false, sharedFolder = false, hostKind = false, updateFolder = false, project = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool takesValue = arg == "--script" || arg == "--shared-folder" || arg == "--host-kind" ||
                                arg == "--command" || arg == "--update-folder" || arg == "--project" ||
                                arg == "--engine" || arg == "--library" || arg == "--missing";
        if (takesValue && i + 1 >= argc) {
            *error = arg + " needs a value";
            return false;
        }
        const std::string value = takesValue ? argv[++i] : "";
        bool* seen = arg == "--script"          ? &script
                     : arg == "--shared-folder" ? &sharedFolder
                     : arg == "--host-kind"     ? &hostKind
                     : arg == "--update-folder" ? &updateFolder
                     : arg == "--project"       ? &project
                                                : nullptr;
        if (seen != nullptr && *seen) {
            *error = arg + " is given twice";
            return false;
        }
        if (seen != nullptr)
            *seen = true;
        if (arg == "--script")
            args->script = value;
        else if (arg == "--shared-folder")
            args->sharedFolder = value;
        else if (arg == "--update-folder")
            args->updateFolder = value;
        else if (arg == "--no-update-server")
            args->updateServer = false;
        else if (arg == "--project")
            args->project = Absolute(value);
        else if (arg == "--engine" && value.empty()) {
            *error = "--engine takes an engine's menu name, not an empty text";
            return false;
        } else if (arg == "--engine")
            args->engines.push_back(value);
        else if (arg == "--library")
            args->libraries.push_back(Absolute(value));
        else if (arg == "--missing")
            args->missing.push_back(value);
        else if (arg == "--launch")
            args->launch = true;
        else if (arg == "--host-kind" && !ParseKind(value, &args->hostKind)) {
            *error = "--host-kind takes a number from 0 to 2147483647, not '" + achost::Shown(value) + "'";
            return false;
        } else if (arg == "--command") {
            achost::DeclaredCommand command;
            if (!achost::ParseDeclaredCommand(value, &command)) {
                *error = "--command takes DEVID:LOCALID:CMD[:VERSION], not '" + achost::Shown(value) + "'";
                return false;
            }
            args->commands.push_back(command);
        } else if (arg == "--help")
            args->help = true;
        else if (arg == "--list-menus")
            args->listMenus = true;
        else if (!takesValue && (arg.empty() || arg[0] != '-') && args->addon.empty())
            args->addon = arg;
        else if (!takesValue) {
            *error = arg.empty() || arg[0] != '-' ? "one add-on only, not also '" + achost::Shown(arg) + "'"
                                                  : "unknown option " + achost::Shown(arg);
            return false;
        }
        if ((takesValue && value.empty()) || (!takesValue && arg.empty())) {
            *error = (takesValue ? arg + " needs a value" : std::string("the add-on's path is empty"));
            return false;
        }
    }
    struct stat folder;
    if (sharedFolder && stat(args->sharedFolder.c_str(), &folder) == 0 && !S_ISDIR(folder.st_mode)) {
        *error = "--shared-folder " + achost::Shown(args->sharedFolder) + " is not a folder";
        return false;
    }
    if (args->listMenus && script) {
        *error = "--list-menus and --script exclude each other";
        return false;
    }
    if (updateFolder && !args->updateServer) {
        *error = "--update-folder and --no-update-server exclude each other";
        return false;
    }
    if (args->addon.empty())
        args->addon = DefaultAddon();
    const std::string besideAddon = args->addon.substr(0, args->addon.rfind('/') + 1) + "MVL_Library";
    struct stat info;
    if (args->libraries.empty() && stat(besideAddon.c_str(), &info) == 0 && S_ISDIR(info.st_mode))
        args->libraries.push_back(Absolute(besideAddon));
    return true;
}

int RunScript(achost::Host& host, const std::string& script) {
    achost::ScriptFrontEnd frontEnd;
    std::string error;
    if (!frontEnd.Open(script, &error)) {
        std::cerr << error << "\n";
        return 2;
    }
    const bool held = achost::RunSession(host, frontEnd);
    if (!frontEnd.Failure().empty())
        std::cerr << frontEnd.Failure() << "\n";
    if (frontEnd.Malformed())
        return 2;
    return held && host.Violations().empty() ? 0 : 1;
}

// Line editing and history at the terminal (libedit). Keys are read one at a time after the session's
// idle wait, so the run loop keeps turning while a person types; when that wait wrote to the screen,
// the prompt and the partial line are drawn again below it.
class LineEditor {
public:
    LineEditor() : editor(el_init("achost", stdin, stdout, stderr)), history(::history_init()) {
        HistEvent event;
        ::history(history, &event, H_SETSIZE, 500);
        el_set(editor, EL_EDITOR, "emacs");
        el_set(editor, EL_SIGNAL, 1);
        el_set(editor, EL_HIST, ::history, history);
        el_set(editor, EL_CLIENTDATA, this);
        el_set(editor, EL_PROMPT, &LineEditor::Prompt);
        el_set(editor, EL_GETCFN, &LineEditor::ReadKey);
        el_source(editor, nullptr); // the person's ~/.editrc
    }
    ~LineEditor() {
        ::history_end(history);
        el_end(editor);
    }
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    bool ReadLine(const std::string& text, const std::function<bool()>& wait, std::string* line) {
        prompt = text;
        idle = &wait;
        int count = 0;
        const char* read = el_gets(editor, &count);
        idle = nullptr;
        if (read == nullptr || count <= 0)
            return false;
        line->assign(read, static_cast<size_t>(count));
        while (!line->empty() && (line->back() == '\n' || line->back() == '\r'))
            line->pop_back();
        if (!line->empty()) {
            HistEvent event;
            ::history(history, &event, H_ENTER, line->c_str());
        }
        return true;
    }

private:
    static LineEditor& Of(EditLine* editor) {
        void* self = nullptr;
        el_get(editor, EL_CLIENTDATA, &self);
        return *static_cast<LineEditor*>(self);
    }
    static const char* Prompt(EditLine* editor) { return Of(editor).prompt.c_str(); }

    // One character, decoded from the locale's multibyte encoding; 0 at the end of input.
    static int ReadKey(EditLine* editor, wchar_t* key) {
        LineEditor& self = Of(editor);
        std::mbstate_t state{};
        for (;;) {
            if (self.idle != nullptr && (*self.idle)())
                el_set(editor, EL_REFRESH);
            char byte = 0;
            const ssize_t n = ::read(STDIN_FILENO, &byte, 1);
            // The run loop keeps standard input non-blocking: no key yet is a wait in the idle call.
            if (n < 0 && (errno == EINTR || errno == EAGAIN))
                continue;
            if (n <= 0)
                return n == 0 ? 0 : -1;
            const size_t decoded = std::mbrtowc(key, &byte, 1, &state);
            if (decoded == static_cast<size_t>(-2))
                continue;
            if (decoded == static_cast<size_t>(-1)) { // not in the locale's encoding: taken as it is
                state = {};
                *key = static_cast<unsigned char>(byte);
            }
            return 1;
        }
    }

    EditLine* editor;
    History* history;
    std::string prompt;
    const std::function<bool()>* idle = nullptr;
};

// Whatever the session printed must have reached its reader: a full disk or a closed pipe is exit 2.
int Finish(int code) {
    std::cout.flush();
    if (!std::cout || std::fflush(stdout) != 0 || std::ferror(stdout)) {
        std::cerr << "achost: cannot write the output: " << std::strerror(errno) << "\n";
        return 2;
    }
    return code;
}

} // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_CTYPE, ""); // the person's encoding: typed text, and the add-on's 8-bit default
    achost::InstallCrashReport();
    if (argc > 1 && std::strcmp(argv[1], "validate") == 0)
        return achost::validate::Validate(std::vector<std::string>(argv + 2, argv + argc));
    if (argc > 1 && std::strcmp(argv[1], "render") == 0)
        return Finish(
            achost::render::Render(std::vector<std::string>(argv + 2, argv + argc), DefaultAddon()));
    std::ios::sync_with_stdio(false); // lets the terminal see typed-ahead lines while the run loop turns
    Arguments args;
    std::string error;
    if (!ParseArguments(argc, argv, &args, &error)) {
        std::cerr << "achost: " << error << "\n" << kUsage;
        return 2;
    }
    if (args.help) {
        std::cout << kUsage << kHelp;
        return Finish(0);
    }
    if (!args.sharedFolder.empty())
        achost::SetSharedFolder(args.sharedFolder);
    achost::HostOptions options;
    options.hostKind = args.hostKind;
    options.commands = args.commands;
    options.project = args.project;
    if (!args.engines.empty())
        options.engines = args.engines;
    options.missing = args.missing;
    options.launch = args.launch || args.script.empty();
    achost::Host host(options);
    for (const std::string& folder : args.libraries)
        if (!host.AddLibrary(folder, &error)) {
            std::cerr << "achost: --library: " << error << "\n";
            return 2;
        }
    if (!host.Start(args.addon, &error)) {
        std::cerr << "achost: " << error << "\n";
        return 2;
    }
    if (args.listMenus) {
        for (const achost::Menu* menu : host.Menus())
            achost::WriteMenu(std::cout, *menu);
        return Finish(0);
    }
    achost::UpdateServer updateServer;
    if (args.updateServer) {
        const std::string folder =
            args.updateFolder.empty() ? achost::BundledUpdateFolder() : args.updateFolder;
        if (!updateServer.Start(folder, &error)) {
            std::cerr << "achost: " << error << "\n";
            return 2;
        }
        achost::UseHttpProxy(updateServer.Address());
    }
    if (!args.script.empty())
        return Finish(RunScript(host, args.script));
    std::cout << host.AddonName() << " - " << host.AddonDescription() << "\n";
    std::optional<LineEditor> editor;
    achost::LineReader reader;
    if (isatty(STDIN_FILENO)) {
        editor.emplace();
        reader = [&](const std::string& prompt, const std::function<bool()>& idle, std::string* line) {
            return editor->ReadLine(prompt, idle, line);
        };
    }
    achost::TerminalFrontEnd terminal(std::cin, std::cout, reader);
    achost::RunSession(host, terminal);
    return Finish(0);
}
