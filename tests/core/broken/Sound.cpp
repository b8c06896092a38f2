#include "ModuleParts.h"
