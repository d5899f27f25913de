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
