#ifndef ZET_OWN_TEXT_H
#define ZET_OWN_TEXT_H

#include <sys/types.h>

#include <string>

#include "deploy/host/Words.h"

namespace ZET::Deploy {

/// The remedy if a file could not be saved, as the module does not say why.
inline constexpr char kRemedyOfRendering[] = ZET_TEXT("make room, or see to the rights of its directory");

/// The same for a file that is saved by itself.
inline constexpr char kRemedyOfSaving[] =
    ZET_TEXT("make room, or see to the rights of its directory; nothing was changed");

/// Saves a text for which the module has no operation in the way the module does: under the temporary name,
/// private until it is whole, and then renamed by the core. Serves as the operation of a `Replacement`.
void SaveOwnText(const std::string& name, const std::string& text, mode_t mode);

}  // namespace ZET::Deploy

#endif
