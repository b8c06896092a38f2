extern "C" bool zet_function_that_nobody_has();
#define MODULE_INIT return zet_function_that_nobody_has();
#include "ModuleParts.h"
