#ifndef ZET_CORE_PATH_ARGUMENT_H
#define ZET_CORE_PATH_ARGUMENT_H

#include <string>

namespace ZET::Core {

/// Throws an `EZETCheckError` in the name of `operation` when `path` is empty or holds a NUL byte, of which
/// the system would take the part before it for the whole.
void RequirePath(const std::string& path, const char* operation);

/// Whether `path`, which could not be opened for the reason in `errno`, is a link to nothing. `errno` stays.
bool IsDanglingLink(const std::string& path);

}  // namespace ZET::Core

#endif
