#ifndef ZET_FILE_MODE_H
#define ZET_FILE_MODE_H

#include <sys/types.h>

#include <string>

namespace ZET::Deploy {

/// The mode of a file, links followed.
mode_t ModeOf(const std::string& path);

/// Gives a file that the module wrote this mode: the module does not tell when it could not. `descriptor` is
/// open on the file, or -1 when this user cannot open it; then it is looked at by name.
void RequireMode(int descriptor, const std::string& path, mode_t mode);

/// The same of a file in a private directory, and the mode of another.
void RequireModeOf(const std::string& model, const std::string& staged);

}  // namespace ZET::Deploy

#endif
