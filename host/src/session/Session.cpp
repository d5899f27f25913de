// Sessions: the host's idle loop, the menu actions, and the front ends that supply actions.
#include "HostImpl.hpp"
#include "achost/FrontEnd.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <sstream>

namespace achost {

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (char c : text)
        quoted += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    return quoted + "\"";
}

namespace {

std::string MenuName(Int64 resID) {
    return "menu " + std::to_string(resID);
}

// The item an expectation names, or null with the reason.
const MenuItem* ExpectedItem(const Host& host, const Action& action, std::string* message) {
    const Menu* menu = host.FindMenu(static_cast<short>(action.numbers[0]));
    const Int64 index = action.numbers[1];
    if (menu == nullptr) {
        *message = "the host shows no " + MenuName(action.numbers[0]);
        return nullptr;
    }
    if (index < 1 || static_cast<size_t>(index) > menu->items.size()) {
        *message = MenuName(action.numbers[0]) + " has " + std::to_string(menu->items.size()) +
                   " items, not " + std::to_string(index);
        return nullptr;
    }
    return &menu->items[static_cast<size_t>(index) - 1];
}

bool ExpectMenuText(const Host& host, const Action& action, std::string* message) {
    const MenuItem* item = ExpectedItem(host, action, message);
    if (item == nullptr || item->text == action.texts[0])
        return item != nullptr;
    *message = "expected " + MenuName(action.numbers[0]) + " item " + std::to_string(action.numbers[1]) +
               " " + Quoted(action.texts[0]) + ", saw " + Quoted(item->text);
    return false;
}

bool ExpectMenuMark(const Host& host, const Action& action, std::string* message) {
    const MenuItem* item = ExpectedItem(host, action, message);
    if (item == nullptr)
        return false;
    const std::string seen = (item->flags & API_MenuItemChecked) != 0 ? "checked" : "unchecked";
    if (seen == action.texts[0])
        return true;
    *message = "expected " + MenuName(action.numbers[0]) + " item " + std::to_string(action.numbers[1]) +
               " " + action.texts[0] + ", saw it " + seen;
    return false;
}

bool ExpectRegistered(const Host& host, const Action& action, std::string* message) {
    const Menu* registered = host.RegisteredMenu();
    const Menu* menu = host.FindMenu(static_cast<short>(action.numbers[0]));
    if (menu != nullptr && menu->registered)
        return true;
    *message = "expected " + MenuName(action.numbers[0]) + " registered, saw " +
               (registered != nullptr ? MenuName(registered->resID) + " registered" : "no registered menu");
    return false;
}

// How long `wait download` turns the run loop at most.
constexpr int kDownloadWaitSeconds = 90;

// `expect dialog RESID shown|hidden|closed`: about any dialog of that resource, in front or not.
bool ExpectDialogState(const Host::Impl& s, const Action& action, std::string* message) {
    std::string seen = "closed";
    for (const auto& [id, dialog] : s.dialogs)
        if (dialog->view.resID == action.numbers[0])
            seen = dialog->view.visible ? "shown" : "hidden";
    if (seen == action.texts[0])
        return true;
    *message =
        "expected dialog " + std::to_string(action.numbers[0]) + " " + action.texts[0] + ", saw it " + seen;
    return false;
}

// The menu and session verbs, while no modal dialog or alert is open.
bool PerformOnMenus(Host& host, const Action& action, std::string* message) {
    switch (action.verb) {
    case Verb::Menu:
        return host.ChooseMenuItem(static_cast<Int32>(action.numbers[0]), message);
    case Verb::MenuOf:
        return host.ChooseMenuItem(static_cast<short>(action.numbers[0]),
                                   static_cast<Int32>(action.numbers[1]), message);
    case Verb::ExpectMenuText:
        return ExpectMenuText(host, action, message);
    case Verb::ExpectMenuMark:
        return ExpectMenuMark(host, action, message);
    case Verb::ExpectRegistered:
        return ExpectRegistered(host, action, message);
    case Verb::Reload:
        return host.Reload(message);
    default:
        *message = "'" + action.source + "' is not possible here";
        return false;
    }
}

} // namespace

bool Host::Impl::Perform(const Action& action, std::string* message) {
    Host& host = *session.host;
    if (action.verb == Verb::Quit || action.verb == Verb::Help)
        return true;
    if (action.verb == Verb::Command) {
        DeclaredCommand declared;
        const std::string text = std::to_string(action.numbers[0]) + ":" + std::to_string(action.numbers[1]) +
                                 ":" + action.texts[0];
        if (!ParseDeclaredCommand(text, &declared)) {
            *message = "a command is four characters and the identifiers are 32-bit numbers";
            return false;
        }
        host.DeclareCommand(declared);
        return true;
    }
    if (action.verb == Verb::WaitDownload) {
        if (TurnRunLoopUntilIdle(*this, kDownloadWaitSeconds))
            return true;
        *message = "the add-on's transfer did not end within " + std::to_string(kDownloadWaitSeconds) + " s";
        return false;
    }
    if (action.verb == Verb::ExpectDialogState)
        return ExpectDialogState(*this, action, message);
    if (action.verb == Verb::Picture)
        return PerformPicture(*this, action, message);
    if (IsEnvironmentVerb(action.verb))
        return PerformOnEnvironment(*this, action, message);
    if (IsLibraryVerb(action.verb))
        return PerformOnLibraries(*this, action, message);
    if (fileRequest) {
        *message =
            "'" + action.source + "' is not possible while the " + fileRequest->kind + " dialog is open";
        return false;
    }
    if (alert || action.verb == Verb::ExpectAlert || action.verb == Verb::Ok)
        return PerformOnAlert(*this, action, message);
    if (IsDialogVerb(action.verb))
        return PerformOnDialog(*this, action, message);
    if (!modalStack.empty()) {
        *message = "'" + action.source + "' is not possible while dialog " +
                   std::to_string(dialogs.at(modalStack.back())->view.resID) + " is open";
        return false;
    }
    return PerformOnMenus(host, action, message);
}

bool Host::Impl::Step() {
    TurnRunLoop(*this);
    Action action;
    FrontEnd* frontEnd = session.frontEnd;
    if (session.ended || frontEnd == nullptr || !frontEnd->NextAction(*session.host, &action) ||
        action.verb == Verb::Quit) {
        session.ended = true;
        return false;
    }
    std::string message;
    const bool ok = Perform(action, &message);
    if (!frontEnd->Outcome(action, ok, message)) {
        session.ended = session.failed = true;
        return false;
    }
    return true;
}

bool Perform(Host& host, const Action& action, std::string* message) {
    return HostAccess::Of(host)->Perform(action, message);
}

bool RunSession(Host& host, FrontEnd& frontEnd) {
    Session& session = HostAccess::Of(host)->session;
    session.frontEnd = &frontEnd;
    session.ended = session.failed = false;
    while (HostAccess::Of(host)->Step()) {
    }
    session.frontEnd = nullptr;
    return !session.failed;
}

void WriteMenu(std::ostream& out, const Menu& menu) {
    out << MenuName(menu.resID) << " " << Quoted(menu.title);
    if (menu.registered)
        out << " in " << Host::PositionName(menu.position);
    out << "\n";
    for (size_t i = 0; i < menu.items.size(); ++i) {
        const MenuItem& item = menu.items[i];
        out << "  " << (i + 1) << ((item.flags & API_MenuItemChecked) != 0 ? " [x] " : " [ ] ") << item.text
            << ((item.flags & API_MenuItemDisabled) != 0 ? "  (disabled)" : "") << "\n";
    }
}

ScriptFrontEnd::ScriptFrontEnd() = default;

ScriptFrontEnd::~ScriptFrontEnd() {
    if (ownFd)
        close(fd);
}

bool ScriptFrontEnd::Open(const std::string& name, std::string* error) {
    path = name;
    const bool standardInput = name == "-" || name == "/dev/stdin";
    // O_NONBLOCK: opening a FIFO by name would otherwise wait for a writer for ever.
    fd = standardInput ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ownFd = !standardInput && fd >= 0;
    struct stat info;
    if (fd < 0 || fstat(fd, &info) != 0) {
        *error = name + ":0: cannot read the script: " + std::strerror(errno);
        return false;
    }
    if (S_ISDIR(info.st_mode)) {
        *error = name + ":0: is a folder, not a script";
        return false;
    }
    if (!S_ISREG(info.st_mode) && !standardInput) {
        *error = name + ":0: is not a regular file (only standard input may be a pipe or a terminal)";
        return false;
    }
    if (ownFd)
        fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    return true;
}

bool ScriptFrontEnd::ReadLine(std::string* line) {
    size_t scanned = start;
    while (true) {
        const size_t end = buffer.find('\n', scanned);
        const bool lastLine = end == std::string::npos && endOfInput && start < buffer.size();
        const size_t length = (end == std::string::npos ? buffer.size() : end) - start;
        if (length > kMaxLine) {
            failure = path + ":" + std::to_string(lineNumber + 1) + ": line longer than " +
                      std::to_string(kMaxLine) + " bytes";
            malformed = true;
            return false;
        }
        if (end != std::string::npos || lastLine) {
            ++lineNumber;
            line->assign(buffer, start, length);
            start += length + (lastLine ? 0 : 1);
            return true;
        }
        if (endOfInput)
            return false;
        buffer.erase(0, start);
        start = 0;
        scanned = buffer.size();
        char chunk[65536];
        const ssize_t n = read(fd, chunk, sizeof chunk);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            failure = path + ":" + std::to_string(lineNumber + 1) +
                      ": cannot read the script: " + std::strerror(errno);
            malformed = true;
            return false;
        }
        endOfInput = n == 0;
        buffer.append(chunk, static_cast<size_t>(n));
    }
}

bool ScriptFrontEnd::NextAction(const Host& /*host*/, Action* action) {
    std::string text;
    while (fd >= 0 && ReadLine(&text)) {
        // A byte-order mark some editors put at the start of a UTF-8 file.
        if (lineNumber == 1 && text.compare(0, 3, "\xEF\xBB\xBF") == 0)
            text.erase(0, 3);
        std::string problem;
        const ParseResult result = ParseAction(text, action, &problem);
        if (result == ParseResult::Malformed) {
            failure = path + ":" + std::to_string(lineNumber) + ": " + problem;
            malformed = true;
            return false;
        }
        action->file = path;
        action->line = lineNumber;
        if (result == ParseResult::Parsed)
            return true;
    }
    return false;
}

bool ScriptFrontEnd::Outcome(const Action& action, bool ok, const std::string& message) {
    if (!ok)
        failure = action.file + ":" + std::to_string(action.line) + ": " + message;
    return ok;
}

bool DriverFrontEnd::Add(const std::string& line, std::string* error) {
    Action action;
    std::string problem;
    const ParseResult result = ParseAction(line, &action, &problem);
    if (error != nullptr)
        *error = problem;
    if (result != ParseResult::Parsed)
        return false;
    action.file = "driver";
    action.line = static_cast<int>(actions.size()) + 1;
    actions.push_back(action);
    return true;
}

bool DriverFrontEnd::NextAction(const Host& host, Action* action) {
    if (onWait)
        onWait(host);
    if (next >= actions.size())
        return false;
    *action = actions[next++];
    return true;
}

bool DriverFrontEnd::Outcome(const Action& action, bool ok, const std::string& message) {
    if (!ok)
        failure = action.file + ":" + std::to_string(action.line) + ": " + message;
    return ok;
}

void WriteFileDialog(std::ostream& out, const FileRequest& request) {
    out << request.kind << " dialog " << Quoted(request.title) << "\n  folder " << Quoted(request.folder)
        << "\n  name " << Quoted(request.fileName) << "\n";
    for (size_t i = 0; i < request.filters.size(); ++i)
        out << (i == request.selectedFilter ? "  > " : "    ") << request.filters[i] << "\n";
}

namespace {

// What the terminal shows: the alert, else the menu and the front dialog.
std::string Screen(const Host& host) {
    std::ostringstream screen;
    const Menu* menu = host.RegisteredMenu();
    const Dialog* dialog = host.FrontDialog();
    if (host.OpenAlert() != nullptr)
        WriteAlert(screen, *host.OpenAlert());
    else if (menu != nullptr && (dialog == nullptr || dialog->kind != DialogKind::Modal))
        WriteMenu(screen, *menu);
    if (host.OpenAlert() == nullptr && dialog != nullptr)
        WriteDialog(screen, *dialog);
    return screen.str();
}

// Turns the run loop until a key can be read from standard input; writes the screen again when a
// transfer's callback changed it meanwhile (`shown`: what it was; none while a file dialog waits) and
// then answers true, so that a line editor draws its prompt again.
bool WaitForKey(const Host& host, std::ostream& out, std::string* shown) {
    Host::Impl& s = *HostAccess::Of(const_cast<Host&>(host));
    TurnRunLoopUntilReadable(s, STDIN_FILENO, [&] { return shown != nullptr && Screen(host) != *shown; });
    if (shown == nullptr || Screen(host) == *shown)
        return false;
    *shown = Screen(host);
    out << "\n" << *shown << std::flush;
    return true;
}

// Turns the run loop until the person types something on standard input (when `wait`: nothing is
// typed ahead); shows the screen again, then `prompt`, whenever a transfer's callback changed it
// meanwhile. Input that cannot be waited for (a regular file) is read at once.
void WaitForInput(const Host& host, bool wait, std::ostream& out, const char* prompt, std::string* shown) {
    while (wait && WaitForKey(host, out, shown))
        out << prompt << std::flush;
}

} // namespace

bool TerminalFrontEnd::AnswerFileDialog(const Host& host, const FileRequest& request, Action* action) {
    WriteFileDialog(out, request);
    std::string path;
    const std::string prompt = "path (an empty line cancels)> ";
    bool read = false;
    if (reader) {
        out.flush();
        read = reader(
            prompt, [&] { return WaitForKey(host, out, nullptr); }, &path);
    } else {
        out << prompt << std::flush;
        WaitForInput(host, &in == &std::cin && std::cin.rdbuf()->in_avail() == 0, out, "", nullptr);
        read = static_cast<bool>(std::getline(in, path));
    }
    if (!read) {
        out << "\n";
        return false;
    }
    const bool folder = request.kind == "folder";
    action->verb = folder ? Verb::AnswerFolder : Verb::AnswerSave;
    action->texts = {path.empty() ? "cancel" : path};
    action->source =
        std::string(folder ? "answer folder " : "answer save ") + (path.empty() ? "cancel" : Quoted(path));
    return true;
}

bool TerminalFrontEnd::NextAction(const Host& host, Action* action) {
    if (openedShown > host.Opened().size()) // a new host run
        openedShown = 0;
    for (; openedShown < host.Opened().size(); ++openedShown)
        out << (host.OpenFailed(openedShown) ? "could not open " : "opened ")
            << Quoted(host.Opened()[openedShown]) << "\n";
    if (host.OpenFileDialog() != nullptr && host.OpenAlert() == nullptr)
        return AnswerFileDialog(host, *host.OpenFileDialog(), action);
    std::string shown = Screen(host);
    out << shown;
    std::string text, error;
    const auto readLine = [&](std::string* line) {
        if (reader) // the reader shows its own prompt
            return out.flush(), reader(
                                    "> ", [&] { return WaitForKey(host, out, &shown); }, line);
        out << "> " << std::flush;
        WaitForInput(host, &in == &std::cin && std::cin.rdbuf()->in_avail() == 0, out, "> ", &shown);
        return static_cast<bool>(std::getline(in, *line));
    };
    while (readLine(&text)) {
        const std::string bareVerb = host.OpenAlert() != nullptr     ? ""
                                     : host.FrontDialog() != nullptr ? "click "
                                                                     : "menu ";
        const bool bareNumber = !text.empty() && text.find_first_not_of("0123456789 ") == std::string::npos;
        const ParseResult result = ParseAction(bareNumber ? bareVerb + text : text, action, &error);
        if (result == ParseResult::Malformed)
            out << error << "\n";
        else if (result == ParseResult::Parsed && action->verb == Verb::Help) {
            out << "Actions (a number alone clicks that item of the dialog, or chooses that item of the "
                   "menu):\n"
                << ActionHelp();
        } else if (result == ParseResult::Parsed && action->verb == Verb::Libraries)
            WriteLibraries(out, host);
        else if (result == ParseResult::Parsed)
            return true;
    }
    out << "\n";
    return false;
}

bool TerminalFrontEnd::Outcome(const Action& /*action*/, bool ok, const std::string& message) {
    if (!ok)
        out << message << "\n";
    return true;
}

} // namespace achost
