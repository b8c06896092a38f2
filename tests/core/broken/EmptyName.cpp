#define MODULE_RECORD_NAME ""
#include "ModuleParts.h"
