#define MODULE_NAME "done-throws"
#define MODULE_DONE throw ZET::EZETError("the end is not the end", "");
#include "ModuleParts.h"
