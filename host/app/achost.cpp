// achost: loads an add-on into the host and lets a person, or a script, use it (see kHelp).
#include "achost/FrontEnd.hpp"
#include "achost/SharedFolder.hpp"

#include <unistd.h>

#include <cstring>
#include <iostream>

namespace {

const char kUsage[] =
    "usage: achost [--shared-folder DIR] [--host-kind N] [--command DEVID:LOCALID:CMD[:VERSION]]...\n"
    "              [--script FILE] [ADDON]\n"
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
    "  --script FILE         run the actions and expectations of FILE, one per line\n"
    "  --list-menus          print every menu the add-on defined and stop\n"
    "\n"
    "Exit codes: 0 success, 1 a script expectation failed or the add-on called the host wrongly,\n"
    "2 bad arguments, an add-on that cannot run or a malformed script.\n";

struct Arguments {
    std::string addon, script, sharedFolder;
    bool listMenus = false;
    bool help = false;
    std::vector<achost::DeclaredCommand> commands;
    API_ApplicationTypeID hostKind = APIAppl_ArchiCADID;
};

std::string DefaultAddon() {
    char self[4096] = {};
    const ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    std::string path = n > 0 ? std::string(self, static_cast<size_t>(n)) : std::string();
    const size_t slash = path.rfind('/');
    return (slash == std::string::npos ? std::string(".") : path.substr(0, slash)) + "/MoravelLibrary.so";
}

bool ParseArguments(int argc, char** argv, Arguments* args) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--script" && hasValue)
            args->script = argv[++i];
        else if (arg == "--shared-folder" && hasValue)
            args->sharedFolder = argv[++i];
        else if (arg == "--host-kind" && hasValue)
            args->hostKind = std::atoi(argv[++i]);
        else if (arg == "--command" && hasValue) {
            achost::DeclaredCommand command;
            if (!achost::ParseDeclaredCommand(argv[++i], &command))
                return false;
            args->commands.push_back(command);
        } else if (arg == "--help")
            args->help = true;
        else if (arg == "--list-menus")
            args->listMenus = true;
        else if (arg[0] != '-' && args->addon.empty())
            args->addon = arg;
        else
            return false;
    }
    if (args->addon.empty())
        args->addon = DefaultAddon();
    return !(args->listMenus && !args->script.empty());
}

int RunScript(achost::Host& host, const std::string& script) {
    achost::ScriptFrontEnd frontEnd;
    std::string error;
    if (!frontEnd.Load(script, &error)) {
        std::cerr << error << "\n";
        return 2;
    }
    if (!achost::RunSession(host, frontEnd)) {
        std::cerr << frontEnd.Failure() << "\n";
        return 1;
    }
    return host.Violations().empty() ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    Arguments args;
    if (!ParseArguments(argc, argv, &args)) {
        std::cerr << kUsage;
        return 2;
    }
    if (args.help) {
        std::cout << kUsage << kHelp;
        return 0;
    }
    if (!args.sharedFolder.empty())
        achost::SetSharedFolder(args.sharedFolder);
    achost::HostOptions options;
    options.hostKind = args.hostKind;
    options.commands = args.commands;
    achost::Host host(options);
    std::string error;
    if (!host.Start(args.addon, &error)) {
        std::cerr << "achost: " << error << "\n";
        return 2;
    }
    if (args.listMenus) {
        for (const achost::Menu* menu : host.Menus())
            achost::WriteMenu(std::cout, *menu);
        return 0;
    }
    if (!args.script.empty())
        return RunScript(host, args.script);
    std::cout << host.AddonName() << " - " << host.AddonDescription() << "\n";
    achost::TerminalFrontEnd terminal(std::cin, std::cout);
    achost::RunSession(host, terminal);
    return 0;
}
