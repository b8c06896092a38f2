#define MODULE_NAME "forgetful"
#define MODULE_DONE
#include "ModuleParts.h"
