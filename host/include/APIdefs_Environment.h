// What the host tells an add-on about itself, and what the add-on tells the host.
#pragma once

#include "APIdefs_Base.h"

// The kind of host application. The CAD application is 0 in this release: an add-on registers
// only when this is the value it finds.
typedef Int32 API_ApplicationTypeID;
#define APIAppl_ArchiCADID 0

#define ServerMainVers_1900 0x0013
#define ServerReleaseVers_R1 1

// Filled by the host; read-only for the add-on.
typedef struct {
    API_ApplicationTypeID serverApplication; // must stay the leading member
    unsigned short mainVersion;
    short releaseVersion;
    bool runningInBackground;
    Int32 buildNum;
    char language[32]; // 8-bit, NUL-terminated, e.g. "INT"
} API_ServerApplicationInfo;

// Filled by the add-on in CheckEnvironment: 8-bit, NUL-terminated texts.
typedef struct {
    char name[256];
    char description[256];
} API_AddOnInfo;

typedef struct {
    API_ServerApplicationInfo serverInfo; // read-only
    API_AddOnInfo addOnInfo;              // filled by the add-on
} API_EnvirParams;
