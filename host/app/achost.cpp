// achost: loads an add-on into the host and lets a person, or a script, use it.
//
//   achost [--shared-folder DIR] [ADDON]                  interactive session on the terminal
//   achost [--shared-folder DIR] --script FILE [ADDON]    scripted session; exit 0 when every expectation
//   held achost --list-menus [ADDON]                           prints every menu the add-on defined
//
// Without ADDON the MoravelLibrary.so beside this program is loaded. Exit codes: 0 success, 1 a
// script expectation failed, 2 bad arguments, an add-on that cannot run or a malformed script.
#include "achost/FrontEnd.hpp"
#include "achost/SharedFolder.hpp"

#include <unistd.h>

#include <cstring>
#include <iostream>

namespace {

const char kUsage[] = "usage: achost [--shared-folder DIR] [--host-kind N] [--script FILE] [ADDON]\n"
                      "       achost --list-menus [ADDON]\n";

struct Arguments {
    std::string addon, script, sharedFolder;
    bool listMenus = false;
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
    if (!args.sharedFolder.empty())
        achost::SetSharedFolder(args.sharedFolder);
    achost::HostOptions options;
    options.hostKind = args.hostKind;
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
