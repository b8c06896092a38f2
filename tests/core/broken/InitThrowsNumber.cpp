#define MODULE_INIT throw 42;
#include "ModuleParts.h"
