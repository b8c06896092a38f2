#ifndef ZET_STATE_FILE_H
#define ZET_STATE_FILE_H

#include <string>

namespace ZET::Deploy {

/// A `Damage` when what stands in the place of the state file is none: a link, say, that leads elsewhere. It
/// may be missing.
void RequireSoundStateFile(const std::string& file);

}  // namespace ZET::Deploy

#endif
