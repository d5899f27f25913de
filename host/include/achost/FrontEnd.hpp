// Front ends: whenever the host waits for the user it asks its front end for the next action. The
// terminal (a person types), a script file (actions and expectations read in order) and tests (the
// C++ driver) are front ends. Host-side only.
#pragma once

#include "achost/Action.hpp"
#include "achost/Host.hpp"

#include <functional>
#include <iosfwd>

namespace achost {

class GS_HOST_EXPORT FrontEnd {
public:
    virtual ~FrontEnd() = default;
    // Waits for the next action; false at the end of input (the session then ends normally).
    virtual bool NextAction(const Host& host, Action* action) = 0;
    // Told the outcome of each action (message = what was seen instead, or why it could not be done);
    // returns false to end the session.
    virtual bool Outcome(const Action& action, bool ok, const std::string& message) = 0;
};

// Runs the host's idle loop: takes actions from the front end and carries them out until `quit`, the
// end of input, or the front end ends the session. The same front end answers every modal dialog and
// alert the add-on opens meanwhile; when the session ends inside one, the dialog is closed with its
// close box and the alert with its first button. False when the front end ended it after a failure.
GS_HOST_EXPORT bool RunSession(Host& host, FrontEnd& frontEnd);

// Carries out one action in the host's present state: on the alert when one is open, on the front
// dialog for the dialog verbs, on the menus when no modal dialog is open. False with what was seen
// instead, or why the action is not possible now.
GS_HOST_EXPORT bool Perform(Host& host, const Action& action, std::string* message);

// Writes a menu as the person sees it: its place, title, and numbered items with marks.
GS_HOST_EXPORT void WriteMenu(std::ostream& out, const Menu& menu);
// Writes a dialog as the person sees it: title, kind and size, then each visible item with its number,
// kind, text and state; list rows with their icon names, the selected row marked with ">".
GS_HOST_EXPORT void WriteDialog(std::ostream& out, const Dialog& dialog);
// Writes an alert: its kind, title, texts and buttons.
GS_HOST_EXPORT void WriteAlert(std::ostream& out, const Alert& alert);
// Writes a file dialog: its kind, title, folder, preselected name and filters (">" the selected one).
GS_HOST_EXPORT void WriteFileDialog(std::ostream& out, const FileRequest& request);
// Writes the active libraries in the host's order, each with its number of parts, and the missing
// definitions.
GS_HOST_EXPORT void WriteLibraries(std::ostream& out, const Host& host);

// Reads a script one line at a time, as the host waits, and hands out its actions in order; so a
// script may be an endless pipe. A line that cannot be read ends the session there (Malformed()).
// The first failed expectation ends the session with "file:line: message".
class GS_HOST_EXPORT ScriptFrontEnd : public FrontEnd {
public:
    ScriptFrontEnd();
    ~ScriptFrontEnd() override;
    ScriptFrontEnd(const ScriptFrontEnd&) = delete;
    ScriptFrontEnd& operator=(const ScriptFrontEnd&) = delete;
    // Opens the script: a regular file, or standard input ("-" or "/dev/stdin", which may be a pipe or
    // a terminal). Never blocks on a FIFO. False with "file:0: reason" for a missing file, a folder, a
    // device or a FIFO named by path.
    bool Open(const std::string& path, std::string* error);
    bool NextAction(const Host& host, Action* action) override;
    bool Outcome(const Action& action, bool ok, const std::string& message) override;
    // "file:line: message" of the failure that ended the session, or empty.
    const std::string& Failure() const { return failure; }
    // True when the session ended at a line that could not be read (malformed, control bytes, too long).
    bool Malformed() const { return malformed; }
    // The longest line a script may hold, in bytes.
    static constexpr size_t kMaxLine = 1 << 20;

private:
    // Reads the next line into `line`; false at the end of input or when `failure` is set.
    bool ReadLine(std::string* line);
    std::string path;
    int fd = -1;
    bool ownFd = false;
    int lineNumber = 0;
    std::string buffer; // read; lines before `start` were handed out
    size_t start = 0;
    bool endOfInput = false;
    bool malformed = false;
    std::string failure;
};

// The C++ driver of tests: hands out the lines given to Add, in order, like a script. Before each
// wait it calls onWait, so a test can look at what the host shows at that moment.
class GS_HOST_EXPORT DriverFrontEnd : public FrontEnd {
public:
    // Adds one action line (named "driver:<n>" in failures); false, nothing added, when malformed.
    bool Add(const std::string& line, std::string* error = nullptr);
    bool NextAction(const Host& host, Action* action) override;
    bool Outcome(const Action& action, bool ok, const std::string& message) override;
    const std::string& Failure() const { return failure; }
    std::function<void(const Host&)> onWait;

private:
    std::vector<Action> actions;
    size_t next = 0;
    std::string failure;
};

// Reads one typed line after showing `prompt`; false at the end of input. Before each keystroke it
// calls `idle`, which turns the host's run loop until a key can be read and answers true when it wrote
// to the screen meanwhile (the reader then shows its prompt and the partial line again). The terminal
// session uses one with line editing and history when standard input is a terminal.
using LineReader =
    std::function<bool(const std::string& prompt, const std::function<bool()>& idle, std::string* line)>;

// A person at a terminal: shows the alert, else the front dialog, else the registered menu; reads one
// action per line (a bare number clicks that item of the dialog, or chooses that item of the menu);
// explains malformed lines and failures and goes on. `help` lists every action with its meaning. A
// file dialog asks for a path instead (an empty line cancels). What the add-on opened on the desktop
// is printed as it happens; `libraries` lists the active libraries.
class GS_HOST_EXPORT TerminalFrontEnd : public FrontEnd {
public:
    // Reads lines from `in` unless a `reader` is given; writes to `out`.
    TerminalFrontEnd(std::istream& in, std::ostream& out, LineReader reader = {})
        : in(in), out(out), reader(std::move(reader)) {}
    bool NextAction(const Host& host, Action* action) override;
    bool Outcome(const Action& action, bool ok, const std::string& message) override;

private:
    // Reads the answer to the waiting file dialog.
    bool AnswerFileDialog(const Host& host, const FileRequest& request, Action* action);

    std::istream& in;
    std::ostream& out;
    LineReader reader;
    size_t openedShown = 0;
};

} // namespace achost
