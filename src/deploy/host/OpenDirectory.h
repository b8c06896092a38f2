#ifndef ZET_OPEN_DIRECTORY_H
#define ZET_OPEN_DIRECTORY_H

#include <sys/stat.h>

#include <string>

namespace ZET::Deploy {

/// Whether it is a directory like /tmp, in which many users rely on being able to write.
bool IsShared(const struct stat& status);

/// The remedy for a directory that others may write.
std::string RemedyOfOpen(const struct stat& directory);

}  // namespace ZET::Deploy

#endif
