#include "Walker.hpp"

namespace achost::validate {

namespace {

const char kMissingText[] = "_ERR_";

bool Shows(const std::string& text) {
    return text.find(kMissingText) != std::string::npos;
}

// Item kinds whose text a person reads: they must not stay empty once the dialog is shown.
bool IsTextItem(const std::string& kind) {
    return kind == "Button" || kind == "LeftText" || kind == "CenterText" || kind == "RightText" ||
           kind == "CheckBox" || kind == "RadioButton" || kind == "GroupBox";
}

std::string DialogName(const Dialog& dialog) {
    return "dialog " + std::to_string(dialog.resID);
}

} // namespace

std::vector<std::string> EveryCommand(const Host& host) {
    std::vector<std::string> lines;
    for (const Menu* menu : host.Menus())
        for (size_t i = 0; i < menu->items.size(); ++i)
            if ((menu->items[i].flags & API_MenuItemDisabled) == 0)
                lines.push_back("menu " + std::to_string(menu->resID) + " " + std::to_string(i + 1));
    return lines;
}

std::deque<std::string> CommandAndItsTransfers(const std::string& line) {
    return {line, "wait download"};
}

std::vector<std::string> DialogActions(const Dialog& dialog) {
    std::vector<std::string> lines;
    for (size_t n = 1; n <= dialog.items.size(); ++n) {
        const DialogItem& item = dialog.items[n - 1];
        if (!item.visible || !item.enabled)
            continue;
        if (item.IsList()) {
            for (size_t row = 1; row <= item.rows.size(); ++row)
                lines.push_back("select " + std::to_string(n) + " " + std::to_string(row));
        } else if (item.kind.find("Button") != std::string::npos || item.kind == "CheckBox" ||
                   item.kind.compare(0, 4, "Icon") == 0)
            lines.push_back("click " + std::to_string(n));
    }
    lines.push_back("close");
    return lines;
}

void Walker::Problem(const std::string& what) {
    if (inspect && problems.insert(what).second)
        report.Fail(what + (where.empty() ? "" : " " + where) +
                    (running.empty() ? "" : " (after " + running.front() + ")"));
}

void Walker::Inspect(const Host& host) {
    for (const Menu* menu : host.Menus())
        for (size_t i = 0; i < menu->items.size(); ++i)
            if (Shows(menu->items[i].text))
                Problem("menu " + std::to_string(menu->resID) + " item " + std::to_string(i + 1) + " reads " +
                        Quoted(menu->items[i].text));
    if (const FileRequest* request = host.OpenFileDialog())
        if (Shows(request->title))
            Problem("a file dialog has the title " + Quoted(request->title));
    if (const Alert* alert = host.OpenAlert()) {
        for (const std::string* text : {&alert->title, &alert->largeText, &alert->smallText})
            if (Shows(*text))
                Problem("an alert reads " + Quoted(*text));
    }
    for (const Dialog* dialog : host.Dialogs()) {
        if (instancesSeen.insert(dialog->id).second) {
            ++dialogsSeen[dialog->resID];
            // Seen between actions: made by the one that just ended (a modeless dialog made hidden).
            openers.emplace(dialog->resID, running.empty() ? lastDone : running.front());
        }
        // A dialog is looked at once, when it is first shown (a modeless one may wait hidden).
        if (!dialog->visible || !instancesShown.insert(dialog->id).second)
            continue;
        if (Shows(dialog->title))
            Problem(DialogName(*dialog) + " has the title " + Quoted(dialog->title));
        for (size_t n = 1; n <= dialog->items.size(); ++n) {
            const DialogItem& item = dialog->items[n - 1];
            const std::string name =
                "item " + std::to_string(n) + " (" + item.kind + ") of " + DialogName(*dialog);
            if (Shows(item.text))
                Problem(name + " reads " + Quoted(item.text));
            for (const ListRow& row : item.rows)
                for (const std::string& tab : row.tabs)
                    if (Shows(tab))
                        Problem("a row of " + name + " reads " + Quoted(tab));
            if (item.visible && IsTextItem(item.kind) && item.text.empty())
                Problem(name + " is shown empty");
            if (item.visible && item.IsList() && item.rows.empty())
                Problem(name + " is shown without rows");
        }
    }
}

std::string Walker::Choose(const Host& host) {
    if (host.OpenAlert() != nullptr) {
        unanswered = 0;
        ++alertsSeen;
        return "ok";
    }
    if (const FileRequest* request = host.OpenFileDialog()) {
        unanswered = 0;
        return onFile ? onFile(host, *request) : "answer " + request->kind + " cancel";
    }
    const Dialog* dialog = host.FrontDialog();
    const bool modal = dialog != nullptr && dialog->kind == DialogKind::Modal;
    const bool idleLeft = onIdle ? true : !idle.empty();
    if (dialog != nullptr && (modal || !running.empty() || !idleLeft)) {
        unanswered = 0;
        const std::string line = onDialog ? onDialog(host, *dialog) : std::string();
        return line.empty() ? "close" : line;
    }
    if (!running.empty()) {
        // Inside an action with nothing shown: a file or folder dialog waits. Cancel it; give up
        // (end the session) when neither answer is taken.
        static const char* const kCancels[] = {"answer save cancel", "answer folder cancel"};
        return ++unanswered > 4 ? std::string() : kCancels[unanswered % 2];
    }
    if (onIdle)
        return onIdle(host);
    if (idle.empty())
        return std::string();
    std::string line = idle.front();
    idle.pop_front();
    return line;
}

bool Walker::NextAction(const Host& host, Action* action) {
    Inspect(host);
    while (budget-- > 0) {
        const std::string line = Choose(host);
        if (line.empty())
            return false;
        std::string error;
        if (ParseAction(line, action, &error) != ParseResult::Parsed) {
            ++refused; // a verb this host does not know: try the next answer
            continue;
        }
        running.push_back(line);
        ++actions;
        return true;
    }
    return false;
}

bool Walker::Outcome(const Action& /*action*/, bool ok, const std::string& /*message*/) {
    if (running.size() == 1)
        lastDone = running.back();
    if (!running.empty())
        running.pop_back();
    refused += ok ? 0 : 1;
    if (ok)
        unanswered = 0;
    return true;
}

} // namespace achost::validate
