#ifndef ZET_WRITES_H
#define ZET_WRITES_H

#include <string>

namespace ZET::Deploy {

/// To be called right before a file gets its new text, or goes. What is found there afterwards may have taken
/// the place of the command's own work.
void IsAboutToWrite(const std::string& path);

/// Whether this thread may have written the file since `ForgetWrites`.
bool MayHaveWritten(const std::string& path);
void ForgetWrites();

}  // namespace ZET::Deploy

#endif
