// The add-on's entry points: what the host calls to register, load and unload MoravelLibrary.
// No exception leaves an entry point: each answers its failure value instead.
#include "ACAPinc.h"
#include "XN_AddonUpdate.hpp"
#include "XN_Comm.hpp"
#include "XN_Language.hpp"
#include "XN_Menu.hpp"
#include "sett_Addon.hpp"

#include <cstring>

#define XN_ENTRY_POINT extern "C" __attribute__((visibility("default")))

namespace {

// The suite's inter-add-on facility is part of every add-on, this one included, though this one's
// commands never call it: the reference keeps its global in the library.
[[maybe_unused]] __attribute__((used)) XN_Comm* const sComm = &gXN_Comm;

template <typename Body>
GSErrCode Guarded(Body body) {
    try {
        return body();
    } catch (...) {
        return APIERR_MEMFULL;
    }
}

void CopyText(char (&field)[256], const char* text) {
    std::strncpy(field, text, sizeof field - 1);
    field[sizeof field - 1] = '\0';
}

GSErrCode InstallHandlers() {
    // All six are installed whatever each answers; the combined code is the OR of the six, kept
    // as it is because callers only test it against NoError.
    return ACAPI_Install_MenuHandler(32500, MenuCommandHandler_ITA) |
           ACAPI_Install_MenuHandler(32501, MenuCommandHandler_INT) |
           ACAPI_Install_MenuHandler(32502, MenuCommandHandler_FRA) |
           ACAPI_Install_MenuHandler(32503, MenuCommandHandler_GER) |
           ACAPI_Install_MenuHandler(32504, MenuCommandHandler_ESP) |
           ACAPI_Install_MenuHandler(32505, MenuCommandHandler_JAP);
}

} // namespace

XN_ENTRY_POINT API_AddonType CheckEnvironment(API_EnvirParams* envir) {
    if (envir->serverInfo.serverApplication != APIAppl_ArchiCADID)
        return APIAddon_DontRegister;
    CopyText(envir->addOnInfo.description, sett_ADDON_NAME_EXTENDED_STRING);
    CopyText(envir->addOnInfo.name, sett_ADDON_NAME);
    return APIAddon_Preload;
}

XN_ENTRY_POINT GSErrCode RegisterInterface() {
    return Guarded([] {
        XN_Language_Read(true);
        const GSErrCode registered =
            ACAPI_Register_Menu(static_cast<short>(XN_MENU_BASE + gXN_Language), 0, MenuCode_Extras, 0);
        return registered != NoError ? registered : ACAPI_Register_BuiltInLibrary();
    });
}

XN_ENTRY_POINT GSErrCode Initialize() {
    return Guarded([] {
        XN_Language_Read(true);
        const GSErrCode installed = InstallHandlers();
        if (installed != NoError)
            return installed;
        XN_AddonUpdate_SetMenuUpdateCheck(XN_MENU_BASE, kMenuItem_AutoUpdate);
        MenuUpdate();
        return GSErrCode(NoError);
    });
}

XN_ENTRY_POINT GSErrCode FreeData() {
    return NoError;
}
