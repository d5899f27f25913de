// What the host tells an add-on about itself, and what the add-on tells the host.
#pragma once

#include "APIdefs_Base.h"
#include "Array.hpp"
#include "Location.hpp"
#include "UniString.hpp"

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

// The environment the add-on asks about through ACAPI_Environment ---------------------------------

// The function codes of ACAPI_Environment.
typedef enum {
    APIEnv_ProjectID = 'PROJ',          // par1 API_ProjectInfo* (out)
    APIEnv_GetRenderingSetsID = 'GREN', // par1 API_RendEffects* (out), par2 (void*) APIRendSet_EffectsID
    APIEnv_ChangeRenderingSetsID =
        'CREN',                     // par1 const API_RendEffects* (in), par2 (void*) APIRendSet_EffectsID
    APIEnv_GetLibrariesID = 'GLIB', // par1 GS::Array<API_LibraryInfo>* (out), par2 Int32* (out, may be null)
    APIEnv_AddLibrariesID = 'ALIB'  // par1 const IO::Location* (in): a folder
} API_EnvironmentID;

// The open project. The caller clears the record; the host fills it and allocates the locations
// with new: the caller deletes them (both may be set).
typedef struct {
    bool untitled; // the project has never been saved: no location is given
    bool teamwork; // a shared project: location_team is its server copy
    short userId;
    Int32 workGroupMode;
    IO::Location* location;      // the project's file
    IO::Location* location_team; // a teamwork project's shared copy
    UInt64 modiStamp;
} API_ProjectInfo;

// Which rendering settings 'GREN' and 'CREN' read and write (par2, cast to a pointer).
typedef enum { APIRendSet_EffectsID = 1, APIRendSet_ImageID = 2 } API_RendSetTypeID;

// The rendering effects: here only the current engine matters.
typedef struct {
    API_ModulID rendererID; // the current rendering engine
    bool useBkgAlpha;
    bool filler_1[7];
} API_RendEffects;

// One active library of 'GLIB': where it is and the name the host shows for it (its folder's name,
// or the add-on's name for the library built into an add-on).
struct API_LibraryInfo {
    IO::Location location;
    GS::UniString name;
};
