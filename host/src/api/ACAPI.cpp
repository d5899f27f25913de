// The add-on interface functions: each finds the running host, checks that the call is allowed in
// the add-on's current state, and serves it from the host's state.
#include "BMInternal.hpp"
#include "HostImpl.hpp"

#include "Location.hpp"

#include <algorithm>
#include <cstring>
#include <iostream>

using achost::Host;
using achost::Menu;
using achost::Phase;

namespace {

// The state of the running host, or null (reported) when the add-on calls with no host running.
Host::Impl* Running(const char* call) {
    Host* host = Host::Current();
    if (host == nullptr) {
        std::cerr << "achost: add-on error: " << call << ": called with no host running\n";
        return nullptr;
    }
    return achost::HostAccess::Of(*host);
}

Host::Impl* Allowed(const char* call, std::initializer_list<Phase> phases) {
    return achost::RunningHost(call, phases);
}

// Resource calls are allowed whenever the add-on runs any of its code.
Host::Impl* ForResources(const char* call) {
    return Allowed(call, {Phase::CheckEnvironment, Phase::RegisterInterface, Phase::Initialize,
                          Phase::Command, Phase::FreeData});
}

// The host's copy of the item `ref` names; null with the error code when there is none.
achost::MenuItem* FindItem(Host::Impl& s, const API_MenuItemRef* ref, GSErrCode* error) {
    Menu* menu = ref != nullptr ? s.MenuFor(ref->menuResID) : nullptr;
    if (ref == nullptr || menu == nullptr) {
        *error = ref == nullptr ? APIERR_BADPARS : APIERR_BADID;
        return nullptr;
    }
    if (ref->itemIndex < 1 || static_cast<size_t>(ref->itemIndex) > menu->items.size()) {
        *error = APIERR_BADINDEX;
        return nullptr;
    }
    return &menu->items[static_cast<size_t>(ref->itemIndex) - 1];
}

std::string TextArgument(void* par2, void* par3) {
    if (par2 != nullptr)
        return static_cast<const char*>(par2);
    return static_cast<const GS::UniString*>(par3)->ToUTF8();
}

GSErrCode MenuItemCall(Host::Impl& s, API_InterfaceID code, const API_MenuItemRef* ref, void* par2,
                       void* par3) {
    GSErrCode error = NoError;
    achost::MenuItem* item = FindItem(s, ref, &error);
    if (item == nullptr)
        return error;
    const bool needsText =
        code == APIIo_SetMenuItemTextID || code == APIIo_AddMenuItemTextID || code == APIIo_GetMenuItemTextID;
    if (needsText ? par2 == nullptr && par3 == nullptr : par2 == nullptr)
        return APIERR_BADPARS;
    switch (code) {
    case APIIo_GetMenuItemFlagsID:
        *static_cast<GSFlags*>(par2) = item->flags;
        break;
    case APIIo_SetMenuItemFlagsID:
        item->flags = *static_cast<GSFlags*>(par2);
        break;
    case APIIo_SetMenuItemTextID:
        item->text = TextArgument(par2, par3);
        break;
    case APIIo_AddMenuItemTextID:
        item->text += TextArgument(par2, par3);
        break;
    default: // APIIo_GetMenuItemTextID
        if (par2 != nullptr)
            std::snprintf(static_cast<char*>(par2), 256, "%s", item->text.c_str());
        else
            *static_cast<GS::UniString*>(par3) = GS::UniString(item->text.c_str(), CC_UTF8);
    }
    return NoError;
}

bool CopyString(const char* call, short resID, short index, GSResModule module, std::string* text) {
    Host::Impl* s = ForResources(call);
    if (s == nullptr)
        return false;
    ++s->stringReads;
    if (achost_internal::InjectedCallFault(achost::HostCall::ResourceString) != NoError)
        return false;
    if (module != achost::kOwnResModule)
        return false;
    const auto found = s->resources.String(resID, index);
    if (found)
        *text = *found;
    return found.has_value();
}

// The 8-bit forms: the UTF-8 text, NUL-terminated, cut at a character boundary to fit the room the
// header promises.
bool CopyNarrowString(const char* call, char* str, short resID, short index, GSResModule module) {
    std::string text;
    if (str == nullptr || !CopyString(call, resID, index, module, &text))
        return false;
    size_t size = std::min<size_t>(text.size(), API_ResStringBufferLen - 1);
    while (size < text.size() && size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80)
        --size;
    std::memcpy(str, text.data(), size);
    str[size] = '\0';
    return true;
}

} // namespace

namespace achost {
Host::Impl* HostAccess::Of(Host& host) {
    return host.impl.get();
}

Host::Impl* RunningHost(const char* call, std::initializer_list<Phase> phases) {
    Host::Impl* s = Running(call);
    return s != nullptr && s->Allow(call, phases) ? s : nullptr;
}
} // namespace achost

GSErrCode ACAPI_Register_Menu(short menuStrResID, short promptStrResID, APIMenuCodeID menuPosCode,
                              GSFlags menuFlags) {
    Host::Impl* s = Allowed("ACAPI_Register_Menu", {Phase::RegisterInterface});
    if (s == nullptr)
        return APIERR_REFUSEDCMD;
    if (const GSErrCode fault = achost_internal::InjectedCallFault(achost::HostCall::RegisterMenu))
        return fault;
    if (menuPosCode < MenuCode_UserDef || menuPosCode > MenuCode_Interoperability)
        return APIERR_BADPARS;
    if (promptStrResID != 0 && !s->resources.Strings(promptStrResID))
        return APIERR_BADID;
    Menu* menu = s->MenuFor(menuStrResID);
    if (menu == nullptr)
        return APIERR_BADID;
    menu->registered = true;
    menu->position = menuPosCode;
    menu->menuFlags = menuFlags;
    return NoError;
}

GSErrCode ACAPI_Register_BuiltInLibrary() {
    Host::Impl* s = Allowed("ACAPI_Register_BuiltInLibrary", {Phase::RegisterInterface});
    if (s == nullptr)
        return APIERR_REFUSEDCMD;
    if (const GSErrCode fault = achost_internal::InjectedCallFault(achost::HostCall::RegisterBuiltInLibrary))
        return fault;
    s->builtInLibrary = true;
    return NoError;
}

GSErrCode ACAPI_Install_MenuHandler(short menuStrResID, APIMenuCommandProc* handlerProc) {
    Host::Impl* s = Allowed("ACAPI_Install_MenuHandler", {Phase::Initialize});
    if (s == nullptr)
        return APIERR_REFUSEDCMD;
    if (const GSErrCode fault = achost_internal::InjectedCallFault(achost::HostCall::InstallMenuHandler))
        return fault;
    if (handlerProc == nullptr)
        return APIERR_BADPARS;
    if (s->MenuFor(menuStrResID) == nullptr)
        return APIERR_BADID;
    s->handlers[menuStrResID] = handlerProc;
    return NoError;
}

void ACAPI_KeepInMemory(bool keepIn) {
    Host::Impl* s = Allowed("ACAPI_KeepInMemory", {Phase::Initialize, Phase::Command});
    if (s != nullptr)
        s->keepInMemory = keepIn;
}

GSErrCode ACAPI_Interface(API_InterfaceID code, void* par1, void* par2, void* par3, void* /*par4*/) {
    Host::Impl* s = Allowed("ACAPI_Interface", {Phase::Initialize, Phase::Command});
    if (s == nullptr)
        return APIERR_REFUSEDCMD;
    switch (code) {
    case APIIo_GetMenuItemFlagsID:
    case APIIo_SetMenuItemFlagsID:
    case APIIo_GetMenuItemTextID:
    case APIIo_SetMenuItemTextID:
    case APIIo_AddMenuItemTextID:
        if (const GSErrCode fault = achost_internal::InjectedCallFault(achost::HostCall::MenuItemText))
            return fault;
        return MenuItemCall(*s, code, static_cast<const API_MenuItemRef*>(par1), par2, par3);
    }
    return APIERR_NOTSUPPORTED;
}

GSErrCode ACAPI_RegisterModelessWindow(Int32 referenceID, APIPaletteControlCallBackProc* callBackProc,
                                       GSFlags controlFlags, const API_Guid& /*paletteGuid*/) {
    Host::Impl* s = Allowed("ACAPI_RegisterModelessWindow", {Phase::Initialize, Phase::Command});
    if (s == nullptr)
        return APIERR_REFUSEDCMD;
    const auto dialog = s->dialogs.find(static_cast<short>(referenceID));
    if (dialog == s->dialogs.end() || dialog->second->modal || s->modelessWindows.count(referenceID) != 0)
        return APIERR_BADID;
    s->modelessWindows[referenceID] = {callBackProc, controlFlags};
    return NoError;
}

GSErrCode ACAPI_UnregisterModelessWindow(Int32 referenceID) {
    Host::Impl* s =
        Allowed("ACAPI_UnregisterModelessWindow", {Phase::Initialize, Phase::Command, Phase::FreeData});
    if (s == nullptr)
        return APIERR_REFUSEDCMD;
    return s->modelessWindows.erase(referenceID) != 0 ? GSErrCode(NoError) : GSErrCode(APIERR_BADID);
}

GSResModule ACAPI_GetOwnResModule() {
    return ForResources("ACAPI_GetOwnResModule") != nullptr ? achost::kOwnResModule : 0;
}

GSErrCode ACAPI_GetOwnLocation(IO::Location* ownFileLoc) {
    Host::Impl* s = ForResources("ACAPI_GetOwnLocation");
    if (s == nullptr)
        return APIERR_NOTINIT;
    if (const GSErrCode fault = achost_internal::InjectedCallFault(achost::HostCall::OwnLocation))
        return fault;
    if (ownFileLoc == nullptr)
        return APIERR_BADPARS;
    if (s->ownPath.empty())
        return APIERR_NOTINIT;
    *ownFileLoc = IO::Location(s->ownPath.c_str());
    return NoError;
}

GSErrCode ACAPI_Command_Test(const API_ModulID* mdid, GSType cmdID, Int32 cmdVersion) {
    Host::Impl* s = ForResources("ACAPI_Command_Test");
    if (s == nullptr)
        return APIERR_REFUSEDCMD;
    if (mdid == nullptr)
        return APIERR_BADPARS;
    GSErrCode result = APIERR_MODULNOTINSTALLED;
    for (const achost::DeclaredCommand& declared : s->options.commands) {
        if (declared.module.developerID != mdid->developerID || declared.module.localID != mdid->localID)
            continue;
        if (declared.command != cmdID) {
            result = result == APIERR_MODULNOTINSTALLED ? APIERR_MODULCMDNOTSUPPORTED : result;
            continue;
        }
        if (declared.version >= cmdVersion)
            return NoError;
        result = APIERR_MODULCMDVERSNOTSUPPORTED;
    }
    return result;
}

void ACAPI_GetReleaseNumber(API_ServerApplicationInfo* serverApplicationInfo) {
    if (serverApplicationInfo == nullptr)
        return;
    std::memset(serverApplicationInfo, 0, sizeof *serverApplicationInfo);
    Host* host = Host::Current();
    serverApplicationInfo->serverApplication =
        host != nullptr ? achost::HostAccess::Of(*host)->options.hostKind : APIAppl_ArchiCADID;
    serverApplicationInfo->mainVersion = ServerMainVers_1900;
    serverApplicationInfo->releaseVersion = ServerReleaseVers_R1;
    serverApplicationInfo->buildNum = 3003;
    std::strcpy(serverApplicationInfo->language, "INT");
}

bool ACAPI_Resource_GetLocUStr(GS::uchar_t* str, short resID, short index, GSResModule resModule) {
    std::string text;
    if (str == nullptr || !CopyString("ACAPI_Resource_GetLocUStr", resID, index, resModule, &text))
        return false;
    const GS::UniString unicode(text.c_str(), CC_UTF8);
    const GS::uchar_t* units = unicode.ToUStr();
    size_t length = std::min<size_t>(unicode.GetLength(), API_ResStringMaxLength);
    if (length < unicode.GetLength() && units[length - 1] >= 0xD800 && units[length - 1] <= 0xDBFF)
        --length; // a surrogate pair is not split
    std::memcpy(str, units, length * sizeof(GS::uchar_t));
    str[length] = 0;
    return true;
}

bool ACAPI_Resource_GetLocStr(char* str, short resID, short index, GSResModule resModule) {
    return CopyNarrowString("ACAPI_Resource_GetLocStr", str, resID, index, resModule);
}

bool ACAPI_Resource_GetFixStr(char* str, short resID, short index, GSResModule resModule) {
    return CopyNarrowString("ACAPI_Resource_GetFixStr", str, resID, index, resModule);
}
