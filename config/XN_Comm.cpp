#include "XN_Comm.hpp"

#include "XN_AddonSettings.hpp"
#include "XN_File.hpp"
#include "XN_SettingsFile.hpp"
#include "sett_Addon.hpp"

#include "ACAPinc.h"
#include "File.hpp"

const char* const kComm_CmdTestStr = "Comm_CmdTest";
const char* const kComm_CmdLangStr = "Comm_CmdLang";
const char* const kComm_CmdOpenStr = "Comm_CmdOpen";
const char* const kComm_CmdVersStr = "Comm_CmdVers";
const char* const kComm_CmdChkLangStr = "Comm_CmdChkLang";
const char* const kComm_CmdChkLangParStr = "Comm_CmdChkLangPar";
const char* const kComm_CmdConvertHAStr = "Comm_CmdConvertHA";

XN_Comm gXN_Comm;

namespace {

const char* const kMarkerExtension = ".sui";
const char* const kSuiteMarkerBase = "Moravel_AC";
const char* const kLoadedKey = "Moravel Loaded";
const char* const kLoadedTrue = "TRUE";
const char* const kLoadedFalse = "FALSE";

// The command the suite's central add-on answers while it is loaded ('SUIT').
const GSType kSuiteCommand = 0x53554954;

// The identifiers the suite's add-ons were registered with. The developer identifier is shared by
// all of them; 'MDID' 32500 in resources/MoravelLibrary.grc must hold the entry of
// XN_Comm_MoravelLibrary.
const GSType kSuiteDeveloperID = 0x4E525644; // 'NRVD'
const int kFirstCode = -3;
const int kCodeCount = 26;
const GSType kLocalIDs[kCodeCount] = {
    0x4D565833, 0x4D565832, 0,          0x4D565355, 0x4D564C42, 0x4D563032, 0x4D563033, // -3 .. 3
    0x4D563034, 0x4D563035, 0x4D563036, 0x4D563037, 0x4D563038, 0x4D563039, 0x4D563130, // 4 .. 10
    0x4D563131, 0x4D563132, 0x4D563133, 0x4D563134, 0x4D563135, 0x4D563136, 0x4D563137, // 11 .. 17
    0x4D563138, 0x4D563139, 0x4D563230, 0x4D563231, 0x4D563232,                         // 18 .. 22
};

long RunningRelease() {
    API_ServerApplicationInfo info = {};
    ACAPI_GetReleaseNumber(&info);
    return info.mainVersion;
}

// `name` in the settings folder; false when the host cannot give the folder.
bool InSettingsFolder(const XN_String& name, XN_Location& location) {
    XN_Location folder;
    if (XN_AddonSettings_GetFolder(folder) != NoError)
        return false;
    location.Set(folder + "/" + name);
    return true;
}

// "_<release>.sui": the ending of every add-on marker of that release.
XN_String AddOnMarkerEnding(long release) {
    return XN_String("_") + XN_String::LongToString(release, 0) + kMarkerExtension;
}

bool FileExists(const XN_Location& location) {
    IO::File probe(location, IO::File::Fail);
    return probe.GetStatus() == NoError;
}

} // namespace

bool XN_Comm::AddOnFileLocation(const long& release, XN_Location& location) {
    return InSettingsFolder(XN_String(sett_ADDON_SETTINGS_FILE_NAME) + AddOnMarkerEnding(release), location);
}

bool XN_Comm::AddOnFileWrite(bool loaded) {
    XN_Location marker;
    if (!AddOnFileLocation(RunningRelease(), marker))
        return false;
    if (FileExists(marker))
        XN_File::Delete(marker);
    if (IO::File(marker, IO::File::Create).GetStatus() != NoError)
        return false;
    XN_List<XN_Setting> records;
    records.AddData(XN_Setting(XN_String(kLoadedKey), XN_String(loaded ? kLoadedTrue : kLoadedFalse)), -1);
    std::string image;
    XN_SettingsFile_BuildImage(records, image);
    XN_SettingsFile_ExchangeHalves(&image[0], image.size());
    return XN_File::WriteBin(marker, image.data(), static_cast<long>(image.size()), false, true) == 0;
}

bool XN_Comm::AddOnFileRead() {
    XN_Location marker;
    if (!AddOnFileLocation(RunningRelease(), marker))
        return false;
    XN_List<XN_Setting> records;
    return XN_SettingsFile_Read(marker, records) == XN_SettingsFile_OK && records.GetCount() == 1 &&
           records[0].value == XN_String(kLoadedTrue);
}

void XN_Comm::AddOnsFileDelete() {
    XN_Location folder;
    if (XN_AddonSettings_GetFolder(folder) != NoError)
        return;
    const XN_String ending = AddOnMarkerEnding(RunningRelease());
    XN_List<XN_Location> files;
    folder.GetFilesInFolder(nullptr, false, &files);
    for (long i = 0; i < files.GetCount(); ++i) {
        if (files[i].EndsWith(ending))
            XN_File::Delete(files[i]);
    }
}

bool XN_Comm::SuiteFileLocation(const long& release, XN_Location& location) {
    return InSettingsFolder(
        XN_String(kSuiteMarkerBase) + XN_String::LongToString(release, 0) + kMarkerExtension, location);
}

bool XN_Comm::SuiteFileExist() {
    XN_Location marker;
    return SuiteFileLocation(RunningRelease(), marker) && FileExists(marker);
}

bool XN_Comm::SuiteIsLoaded(bool& loaded) {
    const API_ModulID suite = ModulID(XN_Comm_Suite);
    if (ACAPI_Command_Test(&suite, kSuiteCommand, 0) == NoError) {
        loaded = true;
        return true;
    }
    loaded = false;
    return SuiteFileExist();
}

unsigned long long XN_Comm::GetMDID(XN_Comm_AddOnsCode code) {
    const API_ModulID id = ModulID(code);
    return (static_cast<unsigned long long>(id.localID) << 32) | id.developerID;
}

API_ModulID XN_Comm::ModulID(XN_Comm_AddOnsCode code) {
    const int index = code - kFirstCode;
    if (index < 0 || index >= kCodeCount || kLocalIDs[index] == 0)
        return API_ModulID{0x20202020, 0x20202020};
    return API_ModulID{kSuiteDeveloperID, kLocalIDs[index]};
}
