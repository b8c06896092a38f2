#define MODULE_NAME "registers-nothing"
#define MODULE_INIT return true;
#include "ModuleParts.h"
