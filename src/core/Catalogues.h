#ifndef ZET_CATALOGUES_H
#define ZET_CATALOGUES_H

#include <string>

namespace ZET::Core {

/// The domain of the core's messages.
inline constexpr char kOwnCatalogue[] = "libzet-core";

/// Looks up the messages of a domain where this library is installed.
void BindCatalogue(const std::string& domain);

}  // namespace ZET::Core

#endif
