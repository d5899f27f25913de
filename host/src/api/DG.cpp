// The DG interface functions: each finds the running host, checks that the dialog, item and row it
// names exist, and changes or reads the host's copy of the dialog.
#include "BMInternal.hpp"
#include "HostImpl.hpp"

using achost::DialogItem;
using achost::Host;
using achost::ListRow;
using achost::OpenDialog;
using achost::Phase;

namespace {

// Dialog calls are allowed whenever add-on code runs after registration, including run-loop
// callbacks (the host is then outside any entry point).
Host::Impl* ForDialogs(const char* call) {
    return achost::RunningHost(call, {Phase::Initialize, Phase::Idle, Phase::Command, Phase::FreeData});
}

// Reports a wrong call to the running host (the caller has found it running).
void Report(const std::string& message) {
    achost::HostAccess::Of(*Host::Current())->Violation(message);
}

OpenDialog* DialogOf(const char* call, short dialId) {
    Host::Impl* s = ForDialogs(call);
    return s != nullptr ? s->FindDialog(call, dialId) : nullptr;
}

DialogItem* ItemOf(const char* call, short dialId, short item) {
    Host::Impl* s = ForDialogs(call);
    return s != nullptr ? s->FindItem(call, dialId, item) : nullptr;
}

DialogItem* ListOf(const char* call, short dialId, short item) {
    Host::Impl* s = ForDialogs(call);
    return s != nullptr ? s->FindList(call, dialId, item) : nullptr;
}

// Row `row` (1-based) of a list item; null, reported, when the list or the row does not exist.
ListRow* RowOf(const char* call, short dialId, short item, short row) {
    DialogItem* list = ListOf(call, dialId, item);
    if (list == nullptr)
        return nullptr;
    if (row >= 1 && static_cast<size_t>(row) <= list->rows.size())
        return &list->rows[static_cast<size_t>(row) - 1];
    Report(std::string(call) + ": list " + std::to_string(item) + " of dialog " + std::to_string(dialId) +
           " has " + std::to_string(list->rows.size()) + " rows, not row " + std::to_string(row));
    return nullptr;
}

// Applies `change` to the item, or to every item of the dialog for DG_ALL_ITEMS.
template <typename Change>
void ForItems(const char* call, short dialId, short item, Change change) {
    if (item != DG_ALL_ITEMS) {
        if (DialogItem* found = ItemOf(call, dialId, item))
            change(*found);
        return;
    }
    if (OpenDialog* dialog = DialogOf(call, dialId))
        for (DialogItem& each : dialog->view.items)
            change(each);
}

std::string Utf8(const GS::UniString& text) {
    return text.ToUTF8();
}

GS::UniString Unicode(const std::string& text) {
    return GS::UniString(text.c_str(), CC_UTF8);
}

short Create(const char* call, GSResModule module, short resId, DGDialCallBack callback, DGUserData userData,
             bool modal) {
    Host::Impl* s = achost::RunningHost(call, {Phase::Initialize, Phase::Idle, Phase::Command});
    return s != nullptr ? s->CreateDialog(call, module, resId, callback, userData, modal) : 0;
}

} // namespace

short DGModalDialog(GSResModule dialResModule, short resId, GSResModule /*dialIconResModule*/,
                    const DGDialCallBack dCallBack, DGUserData userData) {
    if (achost_internal::InjectedCallFault(achost::HostCall::ModalDialog) != NoError)
        return 0;
    const short id = Create("DGModalDialog", dialResModule, resId, dCallBack, userData, true);
    return id != 0 ? achost::HostAccess::Of(*Host::Current())->RunModal(id) : 0;
}

short DGModelessInit(GSResModule dialResModule, short resId, GSResModule /*dialIconResModule*/,
                     const DGDialCallBack dCallBack, DGUserData userData, short show) {
    if (achost_internal::InjectedCallFault(achost::HostCall::ModelessDialog) != NoError)
        return 0;
    const short id = Create("DGModelessInit", dialResModule, resId, dCallBack, userData, false);
    if (OpenDialog* dialog = id != 0 ? DialogOf("DGModelessInit", id) : nullptr)
        dialog->view.visible = show != 0;
    return id;
}

void DGModelessClose(short dialId) {
    if (DialogOf("DGModelessClose", dialId) != nullptr)
        achost::HostAccess::Of(*Host::Current())->CloseDialog(dialId, 0);
}

void DGShowModelessDialog(short dialId, short /*refDialId*/) {
    if (OpenDialog* dialog = DialogOf("DGShowModelessDialog", dialId))
        dialog->view.visible = true;
}

void DGHideModelessDialog(short dialId) {
    if (OpenDialog* dialog = DialogOf("DGHideModelessDialog", dialId))
        dialog->view.visible = false;
}

short DGIsModelessDialogVisible(short dialId) {
    Host::Impl* s = ForDialogs("DGIsModelessDialogVisible");
    return s != nullptr && s->dialogs.count(dialId) != 0 && s->dialogs[dialId]->view.visible ? 1 : 0;
}

short DGIsDialogOpen(short dialId) {
    Host::Impl* s = ForDialogs("DGIsDialogOpen");
    return s != nullptr && s->dialogs.count(dialId) != 0 ? 1 : 0;
}

short DGAlert(short alertType, const GS::UniString& title, const GS::UniString& largeText,
              const GS::UniString& smallText, const GS::UniString& button1, const GS::UniString& button2,
              const GS::UniString& button3) {
    Host::Impl* s = achost::RunningHost("DGAlert", {Phase::Initialize, Phase::Idle, Phase::Command});
    if (s == nullptr || achost_internal::InjectedCallFault(achost::HostCall::Alert) != NoError)
        return 0;
    achost::Alert shown;
    shown.type = alertType;
    shown.title = Utf8(title);
    shown.largeText = Utf8(largeText);
    shown.smallText = Utf8(smallText);
    for (const GS::UniString* button : {&button1, &button2, &button3})
        if (!button->IsEmpty())
            shown.buttons.push_back(Utf8(*button));
    return s->RunAlert(std::move(shown));
}

void DGSetDialogTitle(short dialId, const GS::UniString& title) {
    if (OpenDialog* dialog = DialogOf("DGSetDialogTitle", dialId))
        dialog->view.title = Utf8(title);
}

void DGSetDialogSize(short dialId, short rectType, short hSize, short vSize, short /*fixPoint*/,
                     bool /*keepOld*/) {
    OpenDialog* dialog = DialogOf("DGSetDialogSize", dialId);
    if (dialog == nullptr)
        return;
    if ((rectType != DG_CLIENT && rectType != DG_FRAME) || hSize < 0 || vSize < 0) {
        Report("DGSetDialogSize: bad rectangle or size");
        return;
    }
    dialog->view.width = hSize;
    dialog->view.height = vSize;
}

void DGBeginMoveGrowItems(short dialId) {
    DialogOf("DGBeginMoveGrowItems", dialId);
}

void DGEndMoveGrowItems(short dialId) {
    DialogOf("DGEndMoveGrowItems", dialId);
}

void DGSetItemText(short dialId, short item, const GS::UniString& text) {
    if (DialogItem* found = ItemOf("DGSetItemText", dialId, item))
        found->text = Utf8(text);
}

GS::UniString DGGetItemText(short dialId, short item) {
    const DialogItem* found = ItemOf("DGGetItemText", dialId, item);
    return found != nullptr ? Unicode(found->text) : GS::UniString();
}

void DGShowItem(short dialId, short item) {
    ForItems("DGShowItem", dialId, item, [](DialogItem& each) { each.visible = true; });
}

void DGHideItem(short dialId, short item) {
    ForItems("DGHideItem", dialId, item, [](DialogItem& each) { each.visible = false; });
}

void DGEnableItem(short dialId, short item) {
    ForItems("DGEnableItem", dialId, item, [](DialogItem& each) { each.enabled = true; });
}

void DGDisableItem(short dialId, short item) {
    ForItems("DGDisableItem", dialId, item, [](DialogItem& each) { each.enabled = false; });
}

void DGSetFocus(short dialId, short item) {
    OpenDialog* dialog = DialogOf("DGSetFocus", dialId);
    if (dialog != nullptr && (item == DG_NO_ITEM || ItemOf("DGSetFocus", dialId, item) != nullptr))
        dialog->view.focus = item;
}

void DGRedrawItem(short dialId, short item) {
    ForItems("DGRedrawItem", dialId, item, [](DialogItem&) {});
}

void DGSetItemValLong(short dialId, short item, Int32 value) {
    if (DialogItem* found = ItemOf("DGSetItemValLong", dialId, item))
        found->value = value;
}

Int32 DGGetItemValLong(short dialId, short item) {
    const DialogItem* found = ItemOf("DGGetItemValLong", dialId, item);
    return found != nullptr ? found->value : 0;
}

void DGDisableDraw(short dialId, short item) {
    if (DialogItem* found = ItemOf("DGDisableDraw", dialId, item))
        ++found->drawSuspended;
}

void DGEnableDraw(short dialId, short item) {
    DialogItem* found = ItemOf("DGEnableDraw", dialId, item);
    if (found != nullptr && found->drawSuspended == 0)
        Report("DGEnableDraw: the drawing of item " + std::to_string(item) + " of dialog " +
               std::to_string(dialId) + " was not suspended");
    else if (found != nullptr)
        --found->drawSuspended;
}

bool DGListInsertItem(short dialId, short item, short listItem) {
    DialogItem* list = ListOf("DGListInsertItem", dialId, item);
    if (list == nullptr)
        return false;
    const size_t count = list->rows.size();
    const size_t at = listItem == DG_LIST_BOTTOM ? count : static_cast<size_t>(listItem - 1);
    if (listItem != DG_LIST_BOTTOM && (listItem < 1 || at > count))
        return false;
    ListRow row;
    row.tabs.resize(static_cast<size_t>(list->tabFields));
    list->rows.insert(list->rows.begin() + static_cast<std::ptrdiff_t>(at), row);
    if (list->selected > static_cast<short>(at))
        ++list->selected;
    return true;
}

void DGListDeleteItem(short dialId, short item, short listItem) {
    DialogItem* list = listItem == DG_ALL_ITEMS ? ListOf("DGListDeleteItem", dialId, item) : nullptr;
    if (list != nullptr) {
        list->rows.clear();
        list->selected = 0;
        return;
    }
    if (listItem == DG_ALL_ITEMS || RowOf("DGListDeleteItem", dialId, item, listItem) == nullptr)
        return;
    list = ListOf("DGListDeleteItem", dialId, item);
    list->rows.erase(list->rows.begin() + (listItem - 1));
    list->selected = list->selected == listItem ? 0 : list->selected - (list->selected > listItem ? 1 : 0);
}

short DGListGetItemCount(short dialId, short item) {
    const DialogItem* list = ListOf("DGListGetItemCount", dialId, item);
    return list != nullptr ? static_cast<short>(list->rows.size()) : 0;
}

void DGListSetItemText(short dialId, short item, short listItem, const GS::UniString& text) {
    ListRow* row = RowOf("DGListSetItemText", dialId, item, listItem);
    if (row == nullptr)
        return;
    const std::string all = Utf8(text);
    size_t start = 0;
    for (size_t tab = 0; tab < row->tabs.size(); ++tab) {
        const size_t end = tab + 1 < row->tabs.size() ? all.find('\t', start) : std::string::npos;
        row->tabs[tab] = start <= all.size() ? all.substr(start, end - start) : std::string();
        start = end == std::string::npos ? all.size() + 1 : end + 1;
    }
}

GS::UniString DGListGetItemText(short dialId, short item, short listItem) {
    const ListRow* row = RowOf("DGListGetItemText", dialId, item, listItem);
    size_t used = row != nullptr ? row->tabs.size() : 0; // empty trailing fields are left out
    while (used > 1 && row->tabs[used - 1].empty())
        --used;
    std::string all;
    for (size_t tab = 0; tab < used; ++tab)
        all += (tab == 0 ? "" : "\t") + row->tabs[tab];
    return Unicode(all);
}

void DGListSetTabItemText(short dialId, short item, short listItem, short tabIndex,
                          const GS::UniString& text) {
    ListRow* row = RowOf("DGListSetTabItemText", dialId, item, listItem);
    if (row != nullptr && tabIndex >= 1 && static_cast<size_t>(tabIndex) <= row->tabs.size())
        row->tabs[static_cast<size_t>(tabIndex) - 1] = Utf8(text);
    else if (row != nullptr)
        Report("DGListSetTabItemText: the list has " + std::to_string(row->tabs.size()) +
               " tab fields, not field " + std::to_string(tabIndex));
}

void DGListSetItemIcon(short dialId, short item, short listItem, const DG::Icon& icon) {
    ListRow* row = RowOf("DGListSetItemIcon", dialId, item, listItem);
    if (row == nullptr)
        return;
    Host::Impl* s = achost::HostAccess::Of(*Host::Current());
    const achost::Resource* res = icon.IsEmpty() || icon.GetResourceModule() != achost::kOwnResModule
                                      ? nullptr
                                      : s->resources.Find(achost::ResType("GICN"), icon.GetResourceId());
    if (res == nullptr && !icon.IsEmpty()) {
        s->Violation("DGListSetItemIcon: no 'GICN' " + std::to_string(icon.GetResourceId()) +
                     " in resource module " + std::to_string(icon.GetResourceModule()));
        return;
    }
    row->icon = icon.GetResourceId();
    row->iconName = res != nullptr && !res->header.empty() ? res->header[0].text : "";
}

void DGListSelectItem(short dialId, short item, short listItem) {
    DialogItem* list = ListOf("DGListSelectItem", dialId, item);
    if (list != nullptr && (listItem == 0 || RowOf("DGListSelectItem", dialId, item, listItem) != nullptr))
        list->selected = listItem;
}

short DGListGetSelected(short dialId, short item, short listItem) {
    const DialogItem* list = ListOf("DGListGetSelected", dialId, item);
    return list != nullptr && list->selected > listItem ? list->selected : 0;
}

bool DGListSetTabFieldCount(short dialId, short item, short nTabFields) {
    DialogItem* list = ListOf("DGListSetTabFieldCount", dialId, item);
    if (list == nullptr || nTabFields < 1)
        return false;
    list->tabFields = nTabFields;
    if (list->tabLayout.size() > static_cast<size_t>(nTabFields))
        list->tabLayout.resize(static_cast<size_t>(nTabFields));
    for (ListRow& row : list->rows)
        row.tabs.resize(static_cast<size_t>(nTabFields));
    return true;
}

void DGListSetTabFieldData(short dialId, short item, short tabIndex, short begPos, short endPos,
                           short /*justFlag*/, short /*truncFlag*/, bool /*hasSeparator*/, bool /*status*/) {
    DialogItem* list = ListOf("DGListSetTabFieldData", dialId, item);
    if (list != nullptr && tabIndex >= 1 && tabIndex <= list->tabFields && begPos <= endPos) {
        if (list->tabLayout.size() < static_cast<size_t>(tabIndex))
            list->tabLayout.resize(static_cast<size_t>(tabIndex));
        list->tabLayout[static_cast<size_t>(tabIndex) - 1] = {begPos, endPos};
    } else if (list != nullptr)
        Report("DGListSetTabFieldData: tab field " + std::to_string(tabIndex) + " from " +
               std::to_string(begPos) + " to " + std::to_string(endPos) + " does not fit a list of " +
               std::to_string(list->tabFields) + " tab fields");
}

void DGListSetItemHeight(short dialId, short item, short itemHeight) {
    if (DialogItem* list = ListOf("DGListSetItemHeight", dialId, item))
        list->rowHeight = itemHeight;
}
