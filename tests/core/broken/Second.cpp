#define MODULE_NAME "second"
#include "ModuleParts.h"
