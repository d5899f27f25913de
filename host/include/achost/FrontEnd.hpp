// Front ends: whenever the host waits for the user it asks its front end for the next action. The
// terminal (a person types), a script file (actions and expectations read in order) and tests (the
// C++ driver) are front ends. Host-side only.
#pragma once

#include "achost/Action.hpp"
#include "achost/Host.hpp"

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
// end of input, or the front end ends the session. False when the front end ended it after a failure.
GS_HOST_EXPORT bool RunSession(Host& host, FrontEnd& frontEnd);

// Carries out one action while no dialog is open; false with what was seen instead.
GS_HOST_EXPORT bool Perform(Host& host, const Action& action, std::string* message);

// Writes a menu as the person sees it: its place, title, and numbered items with marks.
GS_HOST_EXPORT void WriteMenu(std::ostream& out, const Menu& menu);

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

private:
    std::vector<Action> actions;
    size_t next = 0;
    std::string failure;
};

// A person at a terminal: shows the registered menu, reads one action per line (a bare number
// chooses that item), explains malformed lines and failures and goes on.
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
