#define MODULE_WITHOUT_DONE
#include "ModuleParts.h"
