#define MODULE_WITHOUT_INIT
#include "ModuleParts.h"
