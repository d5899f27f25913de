// The language dialog (resource 32734): one list row per offered language, showing its flag; the
// dialog previews its own texts in the selected language; OK stores the choice, Cancel restores
// the language in force when it opened.
#include "XN_Language.hpp"

#include "XN_List.hpp"
#include "XN_Resource.hpp"
#include "sett_Addon.hpp"

#include "ACAPinc.h"
#include "DG.h"

namespace {

const short kLanguageDialog = 32734;
const short kDialogWidth = 483;
const short kDialogHeight = 282;
const short kFirstFlagIcon = 32758;

// Dialog items and the general strings they show.
const short kOKButton = 1;
const short kCancelButton = 2;
const short kLanguageList = 3;
const short kText = 6;
const long kOKString = 64;
const long kCancelString = 5;
const long kTextString = 65;

const short kRowHeight = 30;
const short kTabStart = 5;
const short kTabEnd = 285;

// What the dialog carries: the caller's text (not shown) and the language in force at opening.
struct LanguageDialogData {
    const XN_String* info;
    short openingLanguage;
};

// The language of each list row, from row 1 on. Rows are looked up from the start; every opening
// appends the same sequence again, which therefore does no harm. Lives as long as the add-on.
XN_List<short> langIndexes;

GS::UniString GeneralString(short language, long index) {
    return XN_ToUniString(
        XN_Resource_GetString(static_cast<short>(XN_RES_GENERAL_TEXTS + language), index, true));
}

bool IsOffered(short language) {
    const XN_String offered(sett_ADDON_SHOWED_LANGUAGES);
    return offered.IsNull() ||
           offered.IndexOfIgnoreCase(gXN_Languages_Suffixes[language]) != XN_String::kNotFound;
}

// One row per offered language, in table order; the row of the current language selected (row 1
// when it is not offered).
void FillLanguageList(short dialId) {
    DGDisableDraw(dialId, kLanguageList);
    DGListDeleteItem(dialId, kLanguageList, DG_ALL_ITEMS);
    DGListSetTabFieldCount(dialId, kLanguageList, 1);
    DGListSetTabFieldData(dialId, kLanguageList, 1, kTabStart, kTabEnd, DG_IS_LEFT, DG_IS_NOTRUNC, false,
                          false);
    DGListSetItemHeight(dialId, kLanguageList, kRowHeight);
    short currentRow = 1;
    for (short language = 0; language < XN_LANGUAGE_COUNT; ++language) {
        if (!IsOffered(language))
            continue;
        DGListInsertItem(dialId, kLanguageList, DG_LIST_BOTTOM);
        const short row = DGListGetItemCount(dialId, kLanguageList);
        DGListSetItemText(dialId, kLanguageList, row, GS::UniString());
        DGListSetItemIcon(dialId, kLanguageList, row,
                          DG::Icon(ACAPI_GetOwnResModule(), static_cast<short>(kFirstFlagIcon + language)));
        langIndexes.AddData(language, -1);
        if (language == gXN_Language)
            currentRow = row;
    }
    DGListSelectItem(dialId, kLanguageList, currentRow);
    DGEnableDraw(dialId, kLanguageList);
    DGRedrawItem(dialId, kLanguageList);
}

void SetItems(short dialId) {
    DGSetDialogSize(dialId, DG_CLIENT, kDialogWidth, kDialogHeight, DG_TOPLEFT, false);
    DGSetDialogTitle(dialId, GS::UniString(sett_ADDON_NAME));
    DGSetItemText(dialId, kOKButton, GeneralString(gXN_Language, kOKString));
    DGSetItemText(dialId, kCancelButton, GeneralString(gXN_Language, kCancelString));
    DGSetItemText(dialId, kText, GeneralString(gXN_Language, kTextString));
    FillLanguageList(dialId);
}

// The selection previews its language: Cancel and the text change, OK keeps the opening's text.
// Row minus 1 is the language index only because the offered languages ("ita int") are the first of
// the table; kept as the suite's dialogs do it.
void PreviewSelection(short dialId) {
    gXN_Language = static_cast<short>(DGListGetSelected(dialId, kLanguageList, 0) - 1);
    DGSetItemText(dialId, kCancelButton, GeneralString(gXN_Language, kCancelString));
    DGSetItemText(dialId, kText, GeneralString(gXN_Language, kTextString));
}

// Takes the selected row's language; stores it when it differs from the one at opening.
void Confirm(short dialId, const LanguageDialogData& data) {
    short chosen = data.openingLanguage;
    if (!langIndexes.GetData(DGListGetSelected(dialId, kLanguageList, 0) - 1, chosen) ||
        chosen == data.openingLanguage)
        return;
    gXN_Language = chosen;
    XN_Language_Write();
}

short DGCALLBACK LanguageDialogCallback(short message, short dialId, short item, DGUserData userData,
                                        DGMessageData) {
    const LanguageDialogData& data = *reinterpret_cast<const LanguageDialogData*>(userData);
    switch (message) {
    case DG_MSG_INIT:
        SetItems(dialId);
        return 0;
    case DG_MSG_CHANGE:
        if (item == kLanguageList)
            PreviewSelection(dialId);
        return 0;
    case DG_MSG_CLICK:
        if (item == kCancelButton) {
            gXN_Language = data.openingLanguage;
            return item;
        }
        if (item == kOKButton) {
            Confirm(dialId, data);
            return item;
        }
        return 0;
    default:
        return 0;
    }
}

} // namespace

bool XN_Dlg_Language(const XN_String& info) {
    LanguageDialogData data{&info, gXN_Language};
    return DGModalDialog(ACAPI_GetOwnResModule(), kLanguageDialog, ACAPI_GetOwnResModule(),
                         LanguageDialogCallback, reinterpret_cast<DGUserData>(&data)) == kOKButton;
}
