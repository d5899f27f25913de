// The update check and its result dialog: whether a newer release of the running add-on is on the
// vendor's update server, asked for from the menu or automatically every 14 days, and the switch of
// the automatic checks with its check mark.
//
// A check downloads the versions file into "__updxn__.tmp" in the shared folder on the host's main
// run loop, compares the add-on's own line with the server's lines (same name, host tag and major
// number; a later date is newer) and shows the modeless result dialog 32755, from which the updates
// page opens in the browser. Every failure ends in the one alert "the update server cannot be
// reached" (general string 33). One check at a time; everything runs on the host's user-interface
// thread.
#pragma once

#include "DG.h"
#include "XN_General.hpp"
#include "XN_String.hpp"

// The result dialog's resource and the seconds between two automatic checks.
#define XN_UPDATE_DIALOG_ID 32755
#define XN_UPDATE_INTERVAL_SECONDS 1209600

// Starts a check (mode 3 is the one used). `nameVersion` is the add-on's own line ("MoravelLibrary
// 19.0.4.2200 (AC190) 03/08/2018"), `suite` the suite's library name or empty. An automatic check
// (`byUser` false) does nothing within 14 days of the last start. The time of the start is stored
// when the download starts, so a failed automatic check is not retried for 14 days (kept: the suite's
// add-ons share this rhythm). False when `nameVersion` is empty or the shared folder cannot be had;
// true otherwise, also when nothing was started (the alert is shown then).
bool XN_AddonUpdate_CheckForUpdate(long mode, bool byUser, const XN_String& nameVersion,
                                   const XN_String& suite);

// The automatic check, once per host run: the first run after installation ("AutoUpdate" absent)
// only switches automatic checks on; "AutoUpdate" = "1" checks; any other value does nothing.
bool XN_AddonUpdate_AutoUpdate(long mode, const XN_String& nameVersion, const XN_String& suite);

// Flips the check mark of item `itemIndex` in the seven language menus from `menuResID` on, each
// from its own mark, and stores "AutoUpdate" to match. Returns true.
bool XN_AddonUpdate_SwitchAutoUpdateValue(short menuResID, short itemIndex);

// Sets the check mark of the seven menus from "AutoUpdate" (absent counts as 1; values other than
// 0 and 1 leave the marks as they are). Returns true.
bool XN_AddonUpdate_SetMenuUpdateCheck(short menuResID, short itemIndex);

// The download's callback: compares and shows the result on completion, closes the dialog and shows
// the alert on failure. Answers the cancel flag, which only an answer to XN_URL_Opened heeds.
int XN_AddonUpdate_UpdateCallBack(XN_URL_Message message, double progress, void* userData);

// Lays out and fills the result dialog from the state of the last check.
void XN_AddonUpdate_ResultUpdateInit(short dialogID);

// The result dialog's callback (DGModelessInit).
short XN_AddonUpdate_ResultUpdate_Handler(short message, short dialogID, short item, DGUserData userData,
                                          DGMessageData msgData);
