#define MODULE_INIT return false;
#include "ModuleParts.h"
