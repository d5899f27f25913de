// Common sizes and small records of the add-on interface.
#pragma once

#include "GSRoot.hpp"

#define API_NameLen 32
#define API_LongNameLen 128
#define API_UniLongNameLen 256

// Identifies an add-on across the suite: mirrors its 'MDID' resource.
typedef struct {
    GSType developerID;
    GSType localID;
} API_ModulID;

// A globally unique identifier (palettes, elements). The null GUID is all zeros.
typedef struct {
    UInt32 time_low;
    UInt16 time_mid;
    UInt16 time_hi_and_version;
    UInt8 clock_seq_hi_and_reserved;
    UInt8 clock_seq_low;
    UInt8 node[6];
} API_Guid;

static const API_Guid APINULLGuid = {0, 0, 0, 0, 0, {0, 0, 0, 0, 0, 0}};
