// Library parts: the host's record of one part of the active libraries, and the part types.
#pragma once

#include "APIdefs_Base.h"

namespace IO {
class Location;
}

// The kind of a library part. API_ZombieLibID in a search stands for any kind.
typedef enum {
    API_ZombieLibID = 0,
    APILib_SpecID = 1,
    APILib_WindowID = 2,
    APILib_DoorID = 3,
    APILib_ObjectID = 4,
    APILib_LampID = 5,
    APILib_RoomID = 6,
    APILib_PropertyID = 7,
    APILib_PlanSignID = 8,
    APILib_LabelID = 9,
    APILib_MacroID = 10,
    APILib_PictID = 11,
    APILib_ListSchemeID = 12,
    APILib_SkylightID = 13
} API_LibTypeID;

// The owner of the parts the host itself provides.
#define APILibOwner_ArchiCAD 'GSAC'

// One library part. The caller clears the record and sets what a call reads (ACAPI_LibPart_Search:
// typeID and docu_UName; ACAPI_LibPart_Get: index); the host fills the rest. `location` is allocated
// by the host with new on every successful call and belongs to the caller, who deletes it.
typedef struct {
    API_LibTypeID typeID;
    Int32 index;                                // the part's number in the host, from 1
    GS::uchar_t docu_UName[API_UniLongNameLen]; // the part's name, UTF-16, 0-terminated
    GS::uchar_t file_UName[API_UniLongNameLen]; // its file's name, UTF-16, 0-terminated
    bool missingDef; // the host knows the name but no active library holds the part
    bool filler_1;
    bool isTemplate;
    bool isPlaceable;
    GSType ownerID;
    short version;
    unsigned short platformSign;
    Int32 filler_2[7];
    IO::Location* location; // the part's file (the empty location for a missing part)
    Int32 filler_3;
    char ownUnID[API_LongNameLen];
    char parentUnID[API_LongNameLen];
} API_LibPart;
