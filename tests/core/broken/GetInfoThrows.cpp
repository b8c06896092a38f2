#define MODULE_GET_INFO throw ZET::EZETError("no record today", "");
#include "ModuleParts.h"
