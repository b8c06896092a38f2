#include <stdexcept>
#define MODULE_INIT throw std::runtime_error("out of ideas");
#include "ModuleParts.h"
