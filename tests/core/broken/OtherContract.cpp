#define MODULE_VERSION 0x20000
#include "ModuleParts.h"
