#define MODULE_GET_INFO return nullptr;
#include "ModuleParts.h"
