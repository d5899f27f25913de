// ACAPI_LibPart_Search and ACAPI_LibPart_Get: the records of the host's library manager.
#include "BMInternal.hpp"
#include "HostImpl.hpp"

#include <algorithm>
#include <cstring>

using achost::Host;
using achost::Phase;

namespace {

Host::Impl* ForLibraryParts(const char* call) {
    return achost::RunningHost(call, {Phase::Initialize, Phase::Idle, Phase::Command});
}

void CopyName(GS::uchar_t (&field)[API_UniLongNameLen], const std::u16string& name) {
    const size_t units = std::min<size_t>(name.size(), API_UniLongNameLen - 1);
    std::memcpy(field, name.data(), units * sizeof(GS::uchar_t));
    field[units] = 0;
}

// Fills the record from `part`, with a new location for the caller.
GSErrCode Fill(const achost::LibraryPart& part, API_LibPart* record) {
    record->typeID = part.type;
    record->index = part.index;
    CopyName(record->docu_UName, part.name);
    CopyName(record->file_UName, part.fileName);
    record->missingDef = part.missing;
    record->isTemplate = false;
    record->isPlaceable = true;
    record->ownerID = APILibOwner_ArchiCAD;
    record->location = part.missing ? new IO::Location() : new IO::Location(part.file.c_str());
    return NoError;
}

} // namespace

GSErrCode ACAPI_LibPart_Search(API_LibPart* ancestor, bool createIfMissing, bool /*onlyPlaceable*/) {
    Host::Impl* s = ForLibraryParts("ACAPI_LibPart_Search");
    if (s == nullptr)
        return APIERR_REFUSEDCMD;
    if (const GSErrCode fault = achost_internal::InjectedCallFault(achost::HostCall::LibPartSearch))
        return fault;
    if (ancestor == nullptr)
        return APIERR_BADPARS;
    if (createIfMissing)
        return APIERR_NOTSUPPORTED;
    const achost::LibraryPart* part = s->library->manager.Find(ancestor->docu_UName, ancestor->typeID);
    return part != nullptr ? Fill(*part, ancestor) : GSErrCode(APIERR_BADNAME);
}

GSErrCode ACAPI_LibPart_Get(API_LibPart* libPart) {
    Host::Impl* s = ForLibraryParts("ACAPI_LibPart_Get");
    if (s == nullptr)
        return APIERR_REFUSEDCMD;
    if (const GSErrCode fault = achost_internal::InjectedCallFault(achost::HostCall::LibPartGet))
        return fault;
    if (libPart == nullptr)
        return APIERR_BADPARS;
    const achost::LibraryPart* part = s->library->manager.Get(libPart->index);
    return part != nullptr ? Fill(*part, libPart) : GSErrCode(APIERR_BADINDEX);
}
