#ifndef ZET_OWN_TEXT_H
#define ZET_OWN_TEXT_H

#include <sys/types.h>

#include <string>

namespace ZET::Deploy {

/// Saves a text for which the module has no operation as the module saves its own: under the temporary name,
/// private until it is whole, and then renamed by the core. The operation of a `Replacement`.
void SaveOwnText(const std::string& name, const std::string& text, mode_t mode);

}  // namespace ZET::Deploy

#endif
