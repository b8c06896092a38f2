#ifndef ZET_FILE_MODE_H
#define ZET_FILE_MODE_H

#include <sys/types.h>

#include <string>

namespace ZET::Deploy {

/// The mode of a file, links followed.
mode_t ModeOf(const std::string& path);

/// Gives a file that the module wrote this mode, as the module does not report a failure to do so.
/// `descriptor` is open on the file; if it is -1, since this user cannot open it, the mode is only checked,
/// by name.
void RequireMode(int descriptor, const std::string& path, mode_t mode);

/// The same for `staged`, a file in a private directory, with the mode of `model`.
void RequireModeOf(const std::string& model, const std::string& staged);

}  // namespace ZET::Deploy

#endif
