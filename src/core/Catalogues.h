#ifndef ZET_CATALOGUES_H
#define ZET_CATALOGUES_H

#include <string>

namespace ZET::Core {

/// Has the messages of a domain looked up where this library is installed.
void BindCatalogue(const std::string& domain);

}  // namespace ZET::Core

#endif
