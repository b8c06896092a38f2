#define MODULE_INIT throw ZET::EZETCheckError("a check failed", "the detail of it");
#include "ModuleParts.h"
