#ifndef ZET_INSTALLED_H
#define ZET_INSTALLED_H

#include <string>

namespace ZET::Deploy {

/// The version of the product, as the build gives it.
std::string ProductVersion();

/// Whether the module is built into the program, which then loads no other.
bool HasBuiltInModule();

/// The path of the module that is installed with this library, or with the program that contains the library;
/// empty if the module is built in.
std::string OwnModule();

}  // namespace ZET::Deploy

#endif
