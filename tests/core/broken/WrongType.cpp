#define MODULE_TYPE 2
#include "ModuleParts.h"
