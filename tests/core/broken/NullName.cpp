#define MODULE_RECORD_NAME nullptr
#include "ModuleParts.h"
