#ifndef ZET_CORE_PATH_ARGUMENT_H
#define ZET_CORE_PATH_ARGUMENT_H

#include <string>

namespace ZET::Core {

/// Throws an `EZETCheckError` that names `operation` if `path` is empty or contains a NUL byte, at which the
/// system would cut it off.
void RequirePath(const std::string& path, const char* operation);

/// Whether `path`, which could not be opened for the reason in `errno`, is a dangling link. Preserves
/// `errno`.
bool IsDanglingLink(const std::string& path);

}  // namespace ZET::Core

#endif
