#ifndef ZET_INSTALLED_H
#define ZET_INSTALLED_H

#include <string>

namespace ZET::Deploy {

/// The version of the product, as the build gives it.
std::string ProductVersion();

/// Whether the module is a part of the program, which loads no other then.
bool HasBuiltInModule();

/// The module that belongs to the library or to the program that it is a part of, wherever both are
/// installed; empty when it is built into the program.
std::string OwnModule();

}  // namespace ZET::Deploy

#endif
