#ifndef ZET_FILE_NAME_H
#define ZET_FILE_NAME_H

#include <string>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"

namespace ZET::Deploy {

/// Throws a `UsageError` if no file can have this name, before a system call takes a part of it for the name.
inline void RequireFileName(const std::string& file) {
    if (file.empty()) throw UsageError(_("FILE is empty (name a file)"));
    if (file.find('\0') != std::string::npos)
        throw UsageError(_("FILE holds a NUL byte, which no name has (name a file)"));
}

}  // namespace ZET::Deploy

#endif
