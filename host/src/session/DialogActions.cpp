// What a person does and expects at a dialog or an alert, and how both are shown.
#include "HostImpl.hpp"
#include "achost/DialogPicture.hpp"
#include "achost/FrontEnd.hpp"

#include <ostream>

namespace achost {

namespace {

std::string DialogName(const Dialog& dialog) {
    return "dialog " + std::to_string(dialog.resID);
}

std::string ItemName(const Dialog& dialog, Int64 item) {
    return "item " + std::to_string(item) + " of " + DialogName(dialog);
}

// The item an action names, or null with the reason.
const DialogItem* NamedItem(const Dialog& dialog, Int64 item, std::string* message) {
    const DialogItem* found = item >= 1 && item <= 32767 ? dialog.Item(static_cast<short>(item)) : nullptr;
    if (found == nullptr)
        *message = DialogName(dialog) + " has " + std::to_string(dialog.items.size()) + " items, not " +
                   std::to_string(item);
    return found;
}

const DialogItem* NamedList(const Dialog& dialog, Int64 item, std::string* message) {
    const DialogItem* found = NamedItem(dialog, item, message);
    if (found != nullptr && !found->IsList())
        *message = ItemName(dialog, item) + " is a " + found->kind + ", not a list";
    return found != nullptr && found->IsList() ? found : nullptr;
}

// The item a click or a selection reaches: it must be shown and enabled.
const DialogItem* Reachable(const Dialog& dialog, Int64 item, std::string* message, bool list) {
    const DialogItem* found = list ? NamedList(dialog, item, message) : NamedItem(dialog, item, message);
    if (found != nullptr && (!found->visible || !found->enabled))
        *message = ItemName(dialog, item) + " is " + (found->visible ? "disabled" : "hidden");
    return found != nullptr && found->visible && found->enabled ? found : nullptr;
}

bool Expected(const std::string& what, const std::string& expected, const std::string& seen,
              std::string* message) {
    if (expected == seen)
        return true;
    *message = "expected " + what + expected + ", saw " + seen;
    return false;
}

bool ExpectItemState(const Dialog& dialog, const Action& action, std::string* message) {
    const DialogItem* item = NamedItem(dialog, action.numbers[0], message);
    if (item == nullptr)
        return false;
    const std::string& state = action.texts[0];
    const bool aboutVisibility = state == "hidden" || state == "shown";
    const std::string seen =
        aboutVisibility ? (item->visible ? "shown" : "hidden") : (item->enabled ? "enabled" : "disabled");
    return Expected(ItemName(dialog, action.numbers[0]) + " ", state, seen, message);
}

bool ExpectList(const Dialog& dialog, const Action& action, std::string* message) {
    const DialogItem* list = NamedList(dialog, action.numbers[0], message);
    if (list == nullptr)
        return false;
    const bool rows = action.verb == Verb::ExpectListRows;
    const std::string what = "list " + std::to_string(action.numbers[0]) + (rows ? " rows " : " selected ");
    return Expected(what, std::to_string(action.numbers[1]),
                    std::to_string(rows ? static_cast<Int64>(list->rows.size()) : list->selected), message);
}

bool SelectRow(Host::Impl& s, const Dialog& dialog, const Action& action, std::string* message) {
    const DialogItem* list = Reachable(dialog, action.numbers[0], message, true);
    if (list == nullptr)
        return false;
    const Int64 row = action.numbers[1];
    if (row < 1 || static_cast<size_t>(row) > list->rows.size()) {
        *message = "list " + std::to_string(action.numbers[0]) + " of " + DialogName(dialog) + " has " +
                   std::to_string(list->rows.size()) + " rows, not " + std::to_string(row);
        return false;
    }
    s.Select(dialog.id, static_cast<short>(action.numbers[0]), static_cast<short>(row));
    return true;
}

} // namespace

bool IsDialogVerb(Verb verb) {
    return verb >= Verb::ExpectDialog && verb <= Verb::Close;
}

bool PerformOnDialog(Host::Impl& s, const Action& action, std::string* message) {
    OpenDialog* front = s.Front();
    if (front == nullptr) {
        *message = "'" + action.source + "' needs an open dialog, and none is open";
        return false;
    }
    const Dialog& dialog = front->view;
    const DialogItem* item = nullptr;
    switch (action.verb) {
    case Verb::ExpectDialog:
        if (dialog.resID == action.numbers[0])
            return true;
        *message = "expected dialog " + std::to_string(action.numbers[0]) + ", saw " + DialogName(dialog) +
                   " " + Quoted(dialog.title);
        return false;
    case Verb::ExpectTitle:
        return Expected("title ", Quoted(action.texts[0]), Quoted(dialog.title), message);
    case Verb::ExpectItemText:
        item = NamedItem(dialog, action.numbers[0], message);
        return item != nullptr && Expected(ItemName(dialog, action.numbers[0]) + " ", Quoted(action.texts[0]),
                                           Quoted(item->text), message);
    case Verb::ExpectItemState:
        return ExpectItemState(dialog, action, message);
    case Verb::ExpectListRows:
    case Verb::ExpectListSelected:
        return ExpectList(dialog, action, message);
    case Verb::Click:
        if (Reachable(dialog, action.numbers[0], message, false) == nullptr)
            return false;
        s.Click(dialog.id, static_cast<short>(action.numbers[0]));
        return true;
    case Verb::Select:
        return SelectRow(s, dialog, action, message);
    default: // Verb::Close
        s.CloseBox(dialog.id);
        return true;
    }
}

bool PerformPicture(Host::Impl& s, const Action& action, std::string* message) {
    const OpenDialog* front = s.Front();
    if (front == nullptr) {
        *message = "'" + action.source + "' needs an open dialog, and none is open";
        return false;
    }
    return WriteDialogPicture(front->view, s.resources, action.texts[0], message);
}

bool PerformOnAlert(Host::Impl& s, const Action& action, std::string* message) {
    if (!s.alert) {
        *message = "'" + action.source + "' needs an open alert, and none is open";
        return false;
    }
    const Alert& alert = *s.alert;
    switch (action.verb) {
    case Verb::ExpectAlert:
        if (action.texts.size() == 3)
            return Expected(
                "alert ",
                Quoted(action.texts[0]) + " " + Quoted(action.texts[1]) + " " + Quoted(action.texts[2]),
                Quoted(alert.title) + " " + Quoted(alert.largeText) + " " + Quoted(alert.smallText), message);
        return Expected("alert ", Quoted(action.texts[0]) + " " + Quoted(action.texts[1]),
                        Quoted(alert.largeText) + " " + Quoted(alert.smallText), message);
    case Verb::Ok:
        s.alertAnswer = 1;
        return true;
    default:
        *message = "'" + action.source + "' is not possible while an alert is open";
        return false;
    }
}

void WriteDialog(std::ostream& out, const Dialog& dialog) {
    out << DialogName(dialog) << " " << Quoted(dialog.title) << " (" << DialogKindName(dialog.kind) << ", "
        << dialog.width << " x " << dialog.height << ")\n";
    for (size_t n = 1; n <= dialog.items.size(); ++n) {
        const DialogItem& item = dialog.items[n - 1];
        if (!item.visible)
            continue;
        out << "  " << n << " " << item.kind;
        if (!item.IsList())
            out << " " << Quoted(item.text);
        if (item.icon != 0)
            out << " icon " << item.icon;
        if (item.kind == "CheckBox" || item.kind == "RadioButton")
            out << (item.value != 0 ? " [x]" : " [ ]");
        out << (item.enabled ? "" : "  (disabled)")
            << (item.IsList() ? ", " + std::to_string(item.rows.size()) + " rows" : "") << "\n";
        for (size_t row = 1; row <= item.rows.size(); ++row) {
            out << "    " << (item.selected == static_cast<short>(row) ? "> " : "  ") << row;
            if (item.rows[row - 1].icon != 0)
                out << " [" << item.rows[row - 1].iconName << "]";
            for (const std::string& tab : item.rows[row - 1].tabs)
                out << " " << Quoted(tab);
            out << "\n";
        }
    }
}

void WriteAlert(std::ostream& out, const Alert& alert) {
    const char* kind = alert.type == DG_WARNING       ? "warning"
                       : alert.type == DG_INFORMATION ? "information"
                                                      : "error";
    out << "alert (" << kind << ") " << Quoted(alert.title) << "\n  " << Quoted(alert.largeText) << "\n  "
        << Quoted(alert.smallText) << "\n ";
    for (const std::string& button : alert.buttons)
        out << " [" << button << "]";
    out << "  (ok presses the first)\n";
}

} // namespace achost
