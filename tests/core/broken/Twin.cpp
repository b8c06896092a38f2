// Another file with the name of the sound one.
#include "ModuleParts.h"
