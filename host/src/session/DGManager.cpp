// The dialog manager: dialogs built from 'GDLG' resources, the messages sent to their callbacks, the
// modal loop and alerts.
#include "AddonCalls.hpp"
#include "HostImpl.hpp"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace achost {

namespace {

const std::string kModuleProblem = "is not the add-on's own resource module";

bool IsIconKind(const std::string& kind) {
    return kind.compare(0, 4, "Icon") == 0;
}

// The first number after the item's frame, or 0.
Int64 FirstExtraNumber(const std::vector<ResToken>& line) {
    for (size_t i = 5; i < line.size(); ++i)
        if (line[i].kind == ResToken::Number)
            return line[i].number;
    return 0;
}

bool IsFontName(const std::string& word) {
    for (const char* size : {"Large", "Small", "ExtraSmall"})
        if (word.compare(0, std::strlen(size), size) == 0 && word.size() > std::strlen(size) &&
            std::isupper(static_cast<unsigned char>(word[std::strlen(size)])))
            return true;
    return false;
}

// One item line of a 'GDLG': `<Type> <left> <top> <width> <height> [words] ["text"]`.
DialogItem BuildItem(const std::vector<ResToken>& line) {
    DialogItem item;
    item.kind = line[0].text;
    short* const frame[] = {&item.left, &item.top, &item.width, &item.height};
    for (size_t i = 0; i < 4; ++i)
        *frame[i] = static_cast<short>(line[i + 1].number);
    for (size_t i = 5; i < line.size(); ++i) {
        if (line[i].kind == ResToken::String)
            item.text = line[i].text;
        else if (line[i].kind == ResToken::Word && item.font.empty() && IsFontName(line[i].text))
            item.font = line[i].text;
    }
    if (IsIconKind(item.kind))
        item.icon = static_cast<short>(line.back().kind == ResToken::Number ? line.back().number : 0);
    if (item.IsList())
        item.rowHeight = static_cast<short>(FirstExtraNumber(line));
    return item;
}

// The dialog of a checked 'GDLG' resource (the resource compiler has checked its shape).
bool BuildDialog(const Resource& res, Dialog* dialog, std::string* problem) {
    const auto& h = res.header;
    static const std::map<std::string, DialogKind> kKinds = {
        {"Modal", DialogKind::Modal}, {"Modeless", DialogKind::Modeless}, {"Palette", DialogKind::Palette}};
    const auto kind = kKinds.find(h.empty() ? "" : h[0].text);
    if (kind == kKinds.end() || h.size() < 5) {
        *problem = "is a " + (h.empty() ? std::string("?") : h[0].text) + ", not a dialog that can be opened";
        return false;
    }
    dialog->kind = kind->second;
    dialog->resID = static_cast<short>(res.id);
    dialog->title = h.back().text;
    dialog->width = static_cast<short>(h[h.size() - 3].number);
    dialog->height = static_cast<short>(h[h.size() - 2].number);
    for (const auto& line : res.body)
        if (line[0].text != "NoIcon") // a popup's entries belong to the popup
            dialog->items.push_back(BuildItem(line));
    return true;
}

} // namespace

const char* DialogKindName(DialogKind kind) {
    return kind == DialogKind::Modal ? "Modal" : kind == DialogKind::Modeless ? "Modeless" : "Palette";
}

OpenDialog* Host::Impl::FindDialog(const char* call, short dialId) {
    const auto found = dialogs.find(dialId);
    if (found != dialogs.end())
        return found->second.get();
    Violation(std::string(call) + ": no dialog " + std::to_string(dialId) + " is open");
    return nullptr;
}

DialogItem* Host::Impl::FindItem(const char* call, short dialId, short item) {
    OpenDialog* dialog = FindDialog(call, dialId);
    if (dialog == nullptr)
        return nullptr;
    DialogItem* found = dialog->view.Item(item);
    if (found == nullptr)
        Violation(std::string(call) + ": dialog " + std::to_string(dialId) + " ('GDLG' " +
                  std::to_string(dialog->view.resID) + ") has no item " + std::to_string(item));
    return found;
}

DialogItem* Host::Impl::FindList(const char* call, short dialId, short item) {
    DialogItem* found = FindItem(call, dialId, item);
    if (found == nullptr || found->IsList())
        return found;
    Violation(std::string(call) + ": item " + std::to_string(item) + " of dialog " + std::to_string(dialId) +
              " is a " + found->kind + ", not a list");
    return nullptr;
}

short Host::Impl::CreateDialog(const char* call, GSResModule module, short resId, DGDialCallBack callback,
                               DGUserData userData, bool modal) {
    const Resource* res = resources.Find(ResType("GDLG"), resId);
    auto dialog = std::make_unique<OpenDialog>();
    std::string problem = module != kOwnResModule ? "module " + std::to_string(module) + " " + kModuleProblem
                          : res == nullptr        ? "the add-on has no 'GDLG' " + std::to_string(resId)
                                                  : "";
    if (problem.empty() && !BuildDialog(*res, &dialog->view, &problem))
        problem = "'GDLG' " + std::to_string(resId) + " " + problem;
    if (!problem.empty() || callback == nullptr) {
        Violation(std::string(call) + ": " + (problem.empty() ? "no callback" : problem));
        return 0;
    }
    const short id = nextDialogId++;
    dialog->view.id = id;
    dialog->view.callback = callback;
    dialog->view.userData = userData;
    dialog->view.visible = false;
    dialog->modal = modal;
    dialogs[id] = std::move(dialog);
    if (modal)
        modalStack.push_back(id);
    Send(id, DG_MSG_INIT, 0);
    return id;
}

short Host::Impl::Send(short dialId, short message, short item, DGMessageData data) {
    const auto found = dialogs.find(dialId);
    if (found == dialogs.end())
        return 0;
    const Dialog& view = found->second->view;
    // A callback reached from the idle loop (a modeless dialog) runs add-on code like a command does.
    const Phase before = phase;
    if (phase == Phase::Idle)
        phase = Phase::Command;
    const short answer =
        AddonCall::Run("the callback of dialog " + std::to_string(view.resID) + " (message " +
                           std::to_string(message) + ", item " + std::to_string(item) + ")",
                       [&] { return view.callback(message, dialId, item, view.userData, data); });
    phase = before;
    return answer;
}

void Host::Impl::CloseDialog(short dialId, short item) {
    const auto found = dialogs.find(dialId);
    if (found == dialogs.end() || found->second->closing)
        return;
    found->second->closing = true;
    Send(dialId, DG_MSG_CLOSE, item);
    if (modelessWindows.erase(dialId) != 0)
        Violation("ACAPI_UnregisterModelessWindow: dialog " + std::to_string(dialId) +
                  " closed while still registered as a modeless window");
    for (size_t n = 1; n <= found->second->view.items.size(); ++n)
        if (found->second->view.items[n - 1].drawSuspended != 0)
            Violation("DGEnableDraw: dialog " + std::to_string(dialId) + " closed with the drawing of item " +
                      std::to_string(n) + " still suspended");
    const auto modal = std::find(modalStack.begin(), modalStack.end(), dialId);
    if (modal != modalStack.end())
        modalStack.erase(modal);
    if (found->second->modal)
        closedDialogs[dialId] = item;
    dialogs.erase(found);
}

void Host::Impl::CloseAllDialogs() {
    while (!dialogs.empty())
        CloseDialog(dialogs.rbegin()->first, DG_CANCEL);
}

void Host::Impl::Click(short dialId, short item) {
    DialogItem* clicked = dialogs.at(dialId)->view.Item(item);
    if (clicked != nullptr && (clicked->kind == "CheckBox" || clicked->kind == "IconPushCheck"))
        clicked->value = clicked->value == 0 ? 1 : 0;
    else if (clicked != nullptr && (clicked->kind == "RadioButton" || clicked->kind == "IconRadioButton" ||
                                    clicked->kind == "IconPushRadio"))
        clicked->value = 1;
    const short answer = Send(dialId, DG_MSG_CLICK, item);
    if (answer != 0)
        CloseDialog(dialId, answer);
}

void Host::Impl::Select(short dialId, short item, short row) {
    dialogs.at(dialId)->view.items[item - 1].selected = row;
    Send(dialId, DG_MSG_CHANGE, item);
}

void Host::Impl::CloseBox(short dialId) {
    if (dialogs.at(dialId)->modal) {
        CloseDialog(dialId, DG_CANCEL);
        return;
    }
    const short answer = Send(dialId, DG_MSG_CLICK, DG_CLOSEBOX);
    if (answer != 0)
        CloseDialog(dialId, answer);
}

short Host::Impl::RunModal(short dialId) {
    OpenDialog* dialog = dialogs.count(dialId) != 0 ? dialogs[dialId].get() : nullptr;
    if (dialog != nullptr)
        dialog->view.visible = true;
    while (dialogs.count(dialId) != 0)
        if (!Step() && dialogs.count(dialId) != 0)
            CloseBox(dialId);
    const short result = closedDialogs[dialId];
    closedDialogs.erase(dialId);
    return result;
}

short Host::Impl::RunAlert(Alert shown) {
    if (shown.buttons.empty())
        shown.buttons.push_back("OK");
    alert = std::move(shown);
    alertAnswer = 0;
    while (alertAnswer == 0)
        if (!Step())
            alertAnswer = 1;
    alert.reset();
    return alertAnswer;
}

OpenDialog* Host::Impl::Front() {
    if (!modalStack.empty())
        return dialogs.at(modalStack.back()).get();
    for (auto entry = dialogs.rbegin(); entry != dialogs.rend(); ++entry)
        if (entry->second->view.visible)
            return entry->second.get();
    return nullptr;
}

} // namespace achost
