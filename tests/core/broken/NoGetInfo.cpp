#define MODULE_WITHOUT_GET_INFO
#include "ModuleParts.h"
