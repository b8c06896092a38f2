// Text and destructor of this exception are in the module, and so gone with it.
#include <exception>

namespace {

struct OwnError : std::exception {
    const char* what() const noexcept override { return "an error of the module's own"; }
};

}  // namespace

#define MODULE_INIT throw OwnError();
#include "ModuleParts.h"
