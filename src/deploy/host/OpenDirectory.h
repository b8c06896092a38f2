#ifndef ZET_OPEN_DIRECTORY_H
#define ZET_OPEN_DIRECTORY_H

#include <sys/stat.h>

#include <string>

namespace ZET::Deploy {

/// Like /tmp: many rely on that anybody may write there.
bool IsShared(const struct stat& status);

/// What to do about a directory that others may write.
std::string RemedyOfOpen(const struct stat& directory);

}  // namespace ZET::Deploy

#endif
