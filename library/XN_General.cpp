// The host utilities; filled in with the project, rendering-engine and desktop-opener services.
#include "XN_General.hpp"
