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

// Reads a whole script file first (a malformed line is reported before anything runs), then hands out
// its actions in order. The first failed expectation ends the session with "file:line: message".
class GS_HOST_EXPORT ScriptFrontEnd : public FrontEnd {
public:
    // False with "file:line: message" when the file cannot be read or a line is malformed.
    bool Load(const std::string& path, std::string* error);
    bool NextAction(const Host& host, Action* action) override;
    bool Outcome(const Action& action, bool ok, const std::string& message) override;
    // "file:line: message" of the failure that ended the session, or empty.
    const std::string& Failure() const { return failure; }

protected:
    std::vector<Action> actions;

private:
    size_t next = 0;
    std::string failure;
};

// The C++ driver of tests: hands out the lines given to Add, in order, like a script. Before each
// wait it calls onWait, so a test can look at what the host shows at that moment.
class GS_HOST_EXPORT DriverFrontEnd : public ScriptFrontEnd {
public:
    // Adds one action line (named "driver:<n>" in failures); false, nothing added, when malformed.
    bool Add(const std::string& line, std::string* error = nullptr);
    bool NextAction(const Host& host, Action* action) override;
    std::function<void(const Host&)> onWait;
};

// A person at a terminal: shows the alert, else the front dialog, else the registered menu; reads one
// action per line (a bare number clicks that item of the dialog, or chooses that item of the menu);
// explains malformed lines and failures and goes on.
class GS_HOST_EXPORT TerminalFrontEnd : public FrontEnd {
public:
    TerminalFrontEnd(std::istream& in, std::ostream& out) : in(in), out(out) {}
    bool NextAction(const Host& host, Action* action) override;
    bool Outcome(const Action& action, bool ok, const std::string& message) override;

private:
    std::istream& in;
    std::ostream& out;
};

} // namespace achost
