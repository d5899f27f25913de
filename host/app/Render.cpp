// achost render: the dialog reached, in the language asked for, drawn and measured.
#include "Render.hpp"
#include "Validate.hpp"
#include "Walker.hpp"

#include "ACAPinc.h"
#include "achost/DialogPicture.hpp"
#include "achost/FrontEnd.hpp"
#include "achost/SharedFolder.hpp"
#include "achost/UpdateServer.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>

namespace achost::render {

namespace {

namespace fs = std::filesystem;

const char kUsage[] =
    "usage: achost render RESID [--lang N] [--script FILE] [--check-fit] -o FILE.png [ADDON]\n";

using validate::kLanguageCount;
using validate::kLanguages;
using validate::StoreLanguage;

struct Options {
    short resID = 0;
    int language = -1; // -1: whatever the add-on finds
    std::string script, output, addon;
    bool checkFit = false;
};

bool ParseLanguage(const std::string& text, int* language) {
    for (int i = 0; i < kLanguageCount; ++i)
        if (text == std::to_string(i) || text == kLanguages[i]) {
            *language = i;
            return true;
        }
    return false;
}

bool ParseOptions(const std::vector<std::string>& args, Options* options, std::string* error) {
    bool resID = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        const bool takesValue = arg == "--lang" || arg == "--script" || arg == "-o";
        if (takesValue && (i + 1 >= args.size() || args[i + 1].empty())) {
            *error = arg + " needs a value";
            return false;
        }
        if (arg == "--lang") {
            if (!ParseLanguage(args[++i], &options->language)) {
                *error = "--lang takes a language number 0 to 6 or its name (ita int fra ger spa jap rus), "
                         "not '" +
                         Shown(args[i]) + "'";
                return false;
            }
        } else if (arg == "--script")
            options->script = args[++i];
        else if (arg == "-o")
            options->output = args[++i];
        else if (arg == "--check-fit")
            options->checkFit = true;
        else if (arg.empty() || arg[0] == '-') {
            *error = arg.empty() ? "an empty argument" : "unknown option " + Shown(arg);
            return false;
        } else if (!resID) {
            const bool number = arg.size() <= 5 && arg.find_first_not_of("0123456789") == std::string::npos;
            if (!number || std::stoi(arg) < 1 || std::stoi(arg) > 32767) {
                *error = "RESID is a dialog's resource ID, 1 to 32767, not '" + Shown(arg) + "'";
                return false;
            }
            options->resID = static_cast<short>(std::stoi(arg));
            resID = true;
        } else if (options->addon.empty())
            options->addon = arg;
        else {
            *error = "one add-on only, not also '" + Shown(arg) + "'";
            return false;
        }
    }
    *error = !resID                    ? "name the dialog to draw by its 'GDLG' resource ID"
             : options->output.empty() ? "-o FILE.png names the picture to write"
                                       : "";
    return error->empty();
}

// Whether the picture can be written at `path`, so that nothing is run for a picture that cannot be.
bool CanWrite(const std::string& path, std::string* error) {
    const fs::path parent = fs::path(path).parent_path();
    struct stat info;
    const bool exists = stat(path.c_str(), &info) == 0;
    const char* why = exists && S_ISDIR(info.st_mode) ? "it is a folder"
                      : access(parent.empty() ? "." : parent.c_str(), W_OK) != 0 ||
                              (exists && access(path.c_str(), W_OK) != 0)
                          ? std::strerror(errno)
                          : nullptr;
    if (why != nullptr)
        *error = "cannot write the picture " + path + ": " + why;
    return why == nullptr;
}

// A shared folder of the run's own, removed at its end: the add-on sees no settings but those the
// run gives it, and the person's own settings are never touched.
class PrivateFolder {
public:
    PrivateFolder() {
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern =
            std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/achost-render-XXXXXX";
        if (mkdtemp(pattern.data()) != nullptr)
            path = pattern;
    }
    ~PrivateFolder() {
        std::error_code ignored;
        if (!path.empty())
            fs::remove_all(path, ignored);
    }
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;
    std::string path; // empty when it could not be made
};

// The suite's add-ons hold one menu per language, 'STR#' kLanguageMenus + the language's number, and
// register the one of the language they settled on, which is the default when the add-on does not
// offer the language its settings name.
constexpr short kLanguageMenus = 32500;

// The language the started add-on runs in, or -1 when its menus do not tell.
int SettledLanguage(const Host& host) {
    for (short language = 0; language < kLanguageCount; ++language)
        if (host.Resources().Find(ResType("STR#"), kLanguageMenus + language) == nullptr)
            return -1;
    const Menu* registered = host.RegisteredMenu();
    const int language = registered != nullptr ? registered->resID - kLanguageMenus : -1;
    return language >= 0 && language < kLanguageCount ? language : -1;
}

// Hands out another front end's actions and keeps dialog `resID` as it stands when it is first
// shown, or, with `atEnd`, when the other front end has no more actions; then ends the session.
class PictureTaker : public FrontEnd {
public:
    PictureTaker(FrontEnd& inner, short resID, bool atEnd) : inner(inner), resID(resID), atEnd(atEnd) {}
    bool NextAction(const Host& host, Action* action) override {
        if (!atEnd && Take(host))
            return false;
        if (inner.NextAction(host, action))
            return true;
        if (atEnd)
            Take(host);
        return false;
    }
    bool Outcome(const Action& action, bool ok, const std::string& message) override {
        return inner.Outcome(action, ok, message);
    }
    std::optional<Dialog> taken;
    bool hidden = false; // open, but not shown, when looked for

private:
    bool Take(const Host& host) {
        for (const Dialog* dialog : host.Dialogs()) {
            if (dialog->resID == resID && dialog->visible)
                taken = *dialog;
            hidden = hidden || (dialog->resID == resID && !dialog->visible);
        }
        return taken.has_value();
    }
    FrontEnd& inner;
    short resID;
    bool atEnd;
};

std::string DialogIDs(const std::vector<short>& ids) {
    std::string list;
    for (short id : ids)
        list += (list.empty() ? "" : ", ") + std::to_string(id);
    return list.empty() ? "none" : list;
}

// Opens the dialog by every command of every menu in turn, each followed by a wait for the add-on's
// transfers (a modeless dialog may show once its download has ended), until it is shown.
std::optional<Dialog> WalkTo(Host& host, short resID, std::string* error) {
    validate::Reporter quiet(-1); // the walker reports only what it inspects, and it inspects nothing
    validate::Walker walker(quiet);
    walker.inspect = false;
    walker.budget = 10000;
    PictureTaker picture(walker, resID, false);
    for (const std::string& line : validate::EveryCommand(host)) {
        walker.idle = validate::CommandAndItsTransfers(line);
        RunSession(host, picture);
        if (picture.taken)
            return picture.taken;
    }
    std::vector<short> opened;
    for (const auto& entry : walker.openers)
        opened.push_back(entry.first);
    *error = "dialog " + std::to_string(resID) + " is " +
             (picture.hidden ? "opened but never shown" : "never opened") +
             " by a command of the add-on (its commands open " + DialogIDs(opened) +
             "); --script FILE can take the steps that show it";
    return std::nullopt;
}

// The dialog as the script leaves it.
std::optional<Dialog> RunScript(Host& host, const Options& options, int* code, std::string* error) {
    ScriptFrontEnd script;
    if (!script.Open(options.script, error)) {
        *code = 2;
        return std::nullopt;
    }
    PictureTaker picture(script, options.resID, true);
    RunSession(host, picture);
    if (!script.Failure().empty()) {
        *error = script.Failure();
        *code = script.Malformed() ? 2 : 1;
        return std::nullopt;
    }
    if (!picture.taken)
        *error = "dialog " + std::to_string(options.resID) + " is " +
                 (picture.hidden ? "open but hidden" : "not open") + " at the end of " + options.script;
    return picture.taken;
}

int Fail(const std::string& message) {
    std::cerr << "achost render: " << message << "\n";
    return 2;
}

} // namespace

int Render(const std::vector<std::string>& arguments, const std::string& defaultAddon) {
    Options options;
    std::string error;
    if (!arguments.empty() && (arguments[0] == "--help" || arguments[0] == "-h"))
        return std::cout << kUsage, 0;
    if (!ParseOptions(arguments, &options, &error))
        return Fail(error + "\n" + kUsage);
    if (options.addon.empty())
        options.addon = defaultAddon;
    if (!CanWrite(options.output, &error))
        return Fail(error);
    PrivateFolder shared;
    if (shared.path.empty())
        return Fail(std::string("cannot make a shared folder for the add-on: ") + std::strerror(errno));
    SetSharedFolder(shared.path);
    UpdateServer updateServer;
    if (!updateServer.Start(BundledUpdateFolder(), &error))
        return Fail(error);
    UseHttpProxy(updateServer.Address());

    HostOptions hostOptions;
    hostOptions.launch = false;
    Host host(hostOptions);
    if (!host.Start(options.addon, &error))
        return Fail(error);
    std::vector<short> dialogs;
    for (const auto& entry : host.Resources().All())
        if (entry.first.first == ResType("GDLG"))
            dialogs.push_back(static_cast<short>(entry.first.second));
    if (host.Resources().Find(ResType("GDLG"), options.resID) == nullptr)
        return Fail("the add-on has no dialog " + std::to_string(options.resID) +
                    " (its 'GDLG' resources: " + DialogIDs(dialogs) + ")");
    if (options.language >= 0) { // the add-on reads its language when it starts
        const std::string name = host.AddonName();
        host.Quit();
        if (!StoreLanguage(shared.path, name, options.language, &error) || !host.Start(options.addon, &error))
            return Fail(error);
        const int settled = SettledLanguage(host);
        if (settled >= 0 && settled != options.language)
            std::cerr << "achost render: the add-on does not offer " << kLanguages[options.language]
                      << "; drawn in " << kLanguages[settled] << "\n";
    }

    int code = 2;
    const std::optional<Dialog> taken = options.script.empty() ? WalkTo(host, options.resID, &error)
                                                               : RunScript(host, options, &code, &error);
    if (!taken) {
        std::cerr << (code == 2 ? "achost render: " : "") << error << "\n";
        return code;
    }
    const Dialog& dialog = *taken;
    if (!WriteDialogPicture(dialog, host.Resources(), options.output, &error))
        return Fail(error);
    code = host.Violations().empty() ? 0 : 1;
    std::vector<CutText> cut;
    if (options.checkFit && !FindCutTexts(dialog, host.Resources(), &cut, &error))
        return Fail(error);
    const std::string language =
        options.language >= 0 ? std::string(" in ") + kLanguages[options.language] : std::string();
    for (const CutText& text : cut) {
        const std::string item =
            text.item == 0 ? "its title"
                           : "item " + std::to_string(text.item) + " (" + dialog.Item(text.item)->kind + ")";
        std::cerr << "achost render: dialog " << options.resID << language << ", " << item << ": "
                  << validate::Quoted(Shown(text.text)) << " needs " << text.needWidth << " x "
                  << text.needHeight << " px, its frame gives " << text.frameWidth << " x "
                  << text.frameHeight << "\n";
        code = 1;
    }
    return code;
}

} // namespace achost::render
