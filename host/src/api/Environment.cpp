// The environment functions: the open project ('PROJ'), the rendering engines ('GREN', 'CREN' and
// the EXP enumeration) and the active libraries ('GLIB', 'ALIB'), served from the session's set-up
// (HostOptions: project, engines, libraries) and the host's library manager.
#include "BMInternal.hpp"
#include "HostImpl.hpp"
#include "IOInternal.hpp"

#include "Location.hpp"
#include "exp.h"

#include <algorithm>
#include <cstring>

using achost::Host;
using achost::Phase;

namespace {

// Engine n is identified as the developer 'ACHS' with the local ID n.
constexpr UInt32 kEngineDeveloper = 'ACHS';

Host::Impl* ForEnvironment(const char* call) {
    return achost::RunningHost(call, {Phase::Initialize, Phase::Idle, Phase::Command});
}

// The number of the engine with this identifier, or 0.
int EngineNumber(const Host::Impl& s, UInt32 developerID, UInt32 localID) {
    const bool known = developerID == kEngineDeveloper && localID >= 1 && localID <= s.options.engines.size();
    return known ? static_cast<int>(localID) : 0;
}

GSErrCode ProjectInfo(const Host::Impl& s, API_ProjectInfo* info) {
    const std::string& project = s.options.project;
    info->untitled = project.empty();
    info->location = project.empty() ? nullptr : new IO::Location(project.c_str());
    return NoError;
}

GSErrCode GetLibraries(const Host::Impl& s, GS::Array<API_LibraryInfo>* libraries, Int32* embedded) {
    if (const GSErrCode fault = achost_internal::InjectedCallFault(achost::HostCall::GetLibraries))
        return fault;
    libraries->Clear();
    const auto& folders = s.library->manager.Folders();
    const size_t builtInAt = std::min(s.options.builtInLibraryAt, folders.size());
    if (embedded != nullptr)
        *embedded = s.builtInLibrary ? static_cast<Int32>(builtInAt) : -1;
    for (size_t i = 0; i <= folders.size(); ++i) {
        if (i == builtInAt && s.builtInLibrary)
            libraries->Push(
                API_LibraryInfo{IO::Location(s.ownPath.c_str()), GS::UniString(s.name.c_str(), CC_UTF8)});
        if (i == folders.size())
            break;
        const std::string& folder = folders[i].folder;
        const std::string name = folder.substr(folder.rfind('/') + 1);
        libraries->Push(API_LibraryInfo{IO::Location(folder.c_str()), GS::UniString(name.c_str(), CC_UTF8)});
    }
    return NoError;
}

GSErrCode AddLibrary(Host::Impl& s, const IO::Location* folder) {
    ++s.library->additions;
    if (const GSErrCode fault = achost_internal::InjectedCallFault(achost::HostCall::AddLibrary))
        return fault;
    return s.library->manager.AddFolder(IO::LocationAccess::PathOf(*folder));
}

} // namespace

GSErrCode ACAPI_Environment(API_EnvironmentID code, void* par1, void* par2, void* /*par3*/) {
    Host::Impl* s = ForEnvironment("ACAPI_Environment");
    if (s == nullptr)
        return APIERR_REFUSEDCMD;
    const bool effects = reinterpret_cast<GS::IntPtr>(par2) == APIRendSet_EffectsID;
    switch (code) {
    case APIEnv_ProjectID:
        return par1 == nullptr ? APIERR_BADPARS : ProjectInfo(*s, static_cast<API_ProjectInfo*>(par1));
    case APIEnv_GetRenderingSetsID: {
        if (par1 == nullptr || !effects)
            return APIERR_BADPARS;
        auto* rendering = static_cast<API_RendEffects*>(par1);
        rendering->rendererID.developerID = kEngineDeveloper;
        rendering->rendererID.localID = static_cast<GSType>(s->currentEngine);
        return NoError;
    }
    case APIEnv_ChangeRenderingSetsID: {
        if (par1 == nullptr || !effects)
            return APIERR_BADPARS;
        const API_ModulID& id = static_cast<const API_RendEffects*>(par1)->rendererID;
        const int engine = EngineNumber(*s, id.developerID, id.localID);
        if (engine == 0)
            return APIERR_BADID;
        s->currentEngine = engine;
        ++s->engineChanges;
        return NoError;
    }
    case APIEnv_GetLibrariesID:
        return par1 == nullptr ? APIERR_BADPARS
                               : GetLibraries(*s, static_cast<GS::Array<API_LibraryInfo>*>(par1),
                                              static_cast<Int32*>(par2));
    case APIEnv_AddLibrariesID:
        return par1 == nullptr ? APIERR_BADPARS : AddLibrary(*s, static_cast<const IO::Location*>(par1));
    default:
        return APIERR_NOTSUPPORTED;
    }
}

Int32 EXPGetRendNum() {
    Host::Impl* s = ForEnvironment("EXPGetRendNum");
    return s != nullptr ? static_cast<Int32>(s->options.engines.size()) : 0;
}

void EXPGetRendMDID(short id, MDID* mdid) {
    Host::Impl* s = ForEnvironment("EXPGetRendMDID");
    if (mdid == nullptr)
        return;
    const bool known = s != nullptr && id >= 1 && static_cast<size_t>(id) <= s->options.engines.size();
    *mdid = known ? MDID(kEngineDeveloper, static_cast<UInt32>(id)) : MDID();
}

void EXPGetRendMenuStr(const MDID& mdid, GS::UniString* menuStr) {
    Host::Impl* s = ForEnvironment("EXPGetRendMenuStr");
    if (menuStr == nullptr)
        return;
    const int engine = s != nullptr ? EngineNumber(*s, mdid.developerID, mdid.localID) : 0;
    *menuStr = engine != 0
                   ? GS::UniString(s->options.engines[static_cast<size_t>(engine) - 1].c_str(), CC_UTF8)
                   : GS::UniString();
}
