// All record and constant definitions of the add-on interface.
#pragma once

#include "APIdefs_Base.h"
#include "APIdefs_Callback.h"
#include "APIdefs_Environment.h"
#include "APIdefs_ErrorCodes.h"
#include "APIdefs_Interface.h"
#include "APIdefs_LibraryParts.h"
#include "APIdefs_Registration.h"
