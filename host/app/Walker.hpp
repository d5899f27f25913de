// The validator's front end: drives a host for a check. It hands out the check's actions while the
// host is idle, answers every alert with its first button and every dialog by the check's policy
// (its close box unless the check says otherwise), and cancels whatever else waits for the user (a
// file or folder dialog). It looks at everything the host shows and reports texts a person should
// never see: "_ERR_" (a string the add-on could not find) and dialog items left empty.
#pragma once

#include "Validate.hpp"
#include "achost/FrontEnd.hpp"

#include <deque>
#include <map>
#include <set>

namespace achost::validate {

class Walker : public FrontEnd {
public:
    explicit Walker(Reporter& report) : report(report) {}

    // Action lines for when nothing is open, in order; once they are used up the session ends.
    std::deque<std::string> idle;
    // Chooses the next idle action instead of `idle` when set; "" ends the session.
    std::function<std::string(const Host&)> onIdle;
    // Chooses the action for the front dialog; "" means its close box.
    std::function<std::string(const Host&, const Dialog&)> onDialog;
    // Chooses the answer to a file or folder dialog; cancel when unset.
    std::function<std::string(const Host&, const FileRequest&)> onFile;
    // Waits answered before the session is ended, whatever is open.
    long budget = 1000000;
    // Reports "_ERR_" texts and empty dialog items (dialogs are counted either way).
    bool inspect = true;
    // Named after every problem reported, e.g. "in fra" when the add-on runs in that language.
    std::string where;

    // The outermost action that opened each dialog (by 'GDLG' resource ID), first seen first.
    std::map<short, std::string> openers;
    // Dialogs seen, by resource ID, with how many times each was opened.
    std::map<short, int> dialogsSeen;
    int alertsSeen = 0;
    int actions = 0;
    int refused = 0; // actions the host did not carry out (a disabled item, ...)

    bool NextAction(const Host& host, Action* action) override;
    bool Outcome(const Action& action, bool ok, const std::string& message) override;

private:
    void Inspect(const Host& host);
    void Problem(const std::string& what);
    std::string Choose(const Host& host);

    Reporter& report;
    std::vector<std::string> running; // actions being carried out, outermost first
    std::string lastDone;             // the outermost action that ended last
    std::set<short> instancesSeen;    // dialog instances (their run-time IDs) already counted
    std::set<short> instancesShown;   // and already looked at
    std::set<std::string> problems;
    int unanswered = 0; // consecutive waits with nothing shown inside an action
};

// "menu R I" for every enabled item of every menu the host knows now.
std::vector<std::string> EveryCommand(const Host& host);
// A command, then the transfers it started, so that what they show is part of the command.
std::deque<std::string> CommandAndItsTransfers(const std::string& line);

// Every visible, enabled item of `dialog` a person could act on, as action lines.
std::vector<std::string> DialogActions(const Dialog& dialog);

} // namespace achost::validate
