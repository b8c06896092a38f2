#define MODULE_VERSION 0
#include "ModuleParts.h"
