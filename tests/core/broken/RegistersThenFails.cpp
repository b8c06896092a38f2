#define MODULE_INIT \
    Register(core); \
    throw ZET::EZETError("changed its mind", "");
#include "ModuleParts.h"
