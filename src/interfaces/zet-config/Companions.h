#ifndef ZET_COMPANIONS_H
#define ZET_COMPANIONS_H

#include <string>

namespace ZET {

/// Keeps the state of a file before the system first writes it: passes the file to `keep` with the name of
/// its reserve, or records that there is none. What was kept once stays as it is.
void KeepOriginal(const std::string& fileName, void (*keep)(const std::string& from, const std::string& to));

/// Removes a file that may be missing.
void RemoveIfExists(const std::string& fileName);

}  // namespace ZET

#endif
