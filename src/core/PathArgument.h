#ifndef ZET_CORE_PATH_ARGUMENT_H
#define ZET_CORE_PATH_ARGUMENT_H

#include <string>

namespace ZET {

/// Throws an `EZETCheckError` in the name of `operation` when `path` is empty or holds a NUL byte, of which
/// the system would take the part before it for the whole.
void RequirePath(const std::string& path, const char* operation);

}  // namespace ZET

#endif
