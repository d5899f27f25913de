// The host's rendering engines: how many there are, their identifiers and their menu names. Engines
// are numbered from 1 to EXPGetRendNum(). Callable from menu commands and dialog callbacks.
#pragma once

#include "GSRoot.hpp"
#include "UniString.hpp"

// A rendering engine's identifier: the developer and local IDs of the add-on that provides it, the
// same pair as API_ModulID.
class MDID {
public:
    MDID() = default;
    MDID(UInt32 developerID, UInt32 localID) : developerID(developerID), localID(localID) {}
    bool operator==(const MDID& other) const {
        return developerID == other.developerID && localID == other.localID;
    }

    UInt32 developerID = 0;
    UInt32 localID = 0;
};

// Number of rendering engines the host knows.
GS_HOST_EXPORT Int32 EXPGetRendNum(void);
// The identifier of engine `id` (1-based); a zero identifier for a number outside 1..EXPGetRendNum().
GS_HOST_EXPORT void EXPGetRendMDID(short id, MDID* mdid);
// The menu name of the engine identified by `mdid`; an empty text for an unknown identifier.
GS_HOST_EXPORT void EXPGetRendMenuStr(const MDID& mdid, GS::UniString* menuStr);
