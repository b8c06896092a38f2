#ifndef ZET_STATE_FILE_H
#define ZET_STATE_FILE_H

#include <string>

namespace ZET::Deploy {

/// Whether the state file is there. A `Damage` when what stands in its place is none: a link, say, that leads
/// elsewhere.
bool HasStateFile(const std::string& file);

/// Replaces a small file of the commands' own in ZET_VAR_LIB_DIR, whole and durably; an empty text removes
/// it. What cannot be written throws and leaves the former one.
void ReplaceStateFile(const std::string& file, const std::string& text);

}  // namespace ZET::Deploy

#endif
