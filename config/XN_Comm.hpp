// How the suite's add-ons learn of each other: marker files (".sui", in the settings folder, one
// per add-on and host release), the presence test of the suite's central add-on through the host's
// command service, and the identifiers by which one add-on addresses another.
//
// Marker files hold one settings record, "Moravel Loaded" = "TRUE" or "FALSE", in the settings
// file format. Everything here runs on the host's user-interface thread.
#pragma once

#include "APIdefs_Base.h"
#include "XN_Location.hpp"

// Names of the suite's inter-add-on commands, as the add-ons exchange them.
extern const char* const kComm_CmdTestStr;
extern const char* const kComm_CmdLangStr;
extern const char* const kComm_CmdOpenStr;
extern const char* const kComm_CmdVersStr;
extern const char* const kComm_CmdChkLangStr;
extern const char* const kComm_CmdChkLangParStr;
extern const char* const kComm_CmdConvertHAStr;

// The code of one add-on of the suite: valid from -3 to 22; -1 names no add-on.
enum XN_Comm_AddOnsCode : int {
    XN_Comm_NoAddOn = -1,
    XN_Comm_Suite = 0, // the suite's central add-on
    XN_Comm_MoravelLibrary = 1,
};

// The value GetMDID answers for a code that names no add-on: eight blank bytes.
#define XN_COMM_BLANK_MDID 0x2020202020202020ULL

class XN_Comm {
public:
    // The add-on marker for `release`: "<sett_ADDON_SETTINGS_FILE_NAME>_<release>.sui" in the
    // settings folder. False when the host cannot give the folder.
    static bool AddOnFileLocation(const long& release, XN_Location& location);
    // Writes this add-on's marker for the running release, "TRUE" when `loaded`, else "FALSE".
    static bool AddOnFileWrite(bool loaded);
    // True only when this add-on's marker exists, parses, holds exactly one record and its value is
    // exactly "TRUE" (the key is not looked at).
    static bool AddOnFileRead();
    // Deletes every file of the settings folder whose name ends with "_<release>.sui": the markers of
    // all add-ons for the running release (the suite marker has no "_" before the release).
    static void AddOnsFileDelete();

    // The suite marker for `release`: "Moravel_AC<release>.sui" in the settings folder.
    static bool SuiteFileLocation(const long& release, XN_Location& location);
    // True when the suite marker of the running release exists.
    static bool SuiteFileExist();
    // Asks the host whether the central add-on answers the command 'SUIT'. If it does, `loaded` is
    // true and so is the result. Otherwise `loaded` is false and the result tells whether the suite
    // marker is on disk.
    static bool SuiteIsLoaded(bool& loaded);

    // The 64-bit identifier of add-on `code`: the suite's developer identifier in the low 32 bits,
    // the add-on's local identifier in the high 32 bits; XN_COMM_BLANK_MDID for an invalid code.
    static unsigned long long GetMDID(XN_Comm_AddOnsCode code);

    // The host's module identifier of add-on `code`, as ACAPI_Command_Test takes it.
    static API_ModulID ModulID(XN_Comm_AddOnsCode code);
};

// The one instance; its operations need no state.
extern XN_Comm gXN_Comm;
