#define MODULE_NAME "sound"
#define MODULE_RECORD_NAME "ignores-refusal"
#define MODULE_INIT \
    Register(core); \
    return true;
#include "ModuleParts.h"
