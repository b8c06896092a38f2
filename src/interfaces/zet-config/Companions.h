#ifndef ZET_COMPANIONS_H
#define ZET_COMPANIONS_H

#include <string>

namespace ZET {

/// Keeps what stands under a file's name before the system first writes it: the file itself, handed on to its
/// reserve with `keep`, or the record that there is none. What was kept once stays as it is.
void KeepOriginal(const std::string& fileName, void (*keep)(const std::string& from, const std::string& to));

/// Removes a file that may be missing.
void RemoveIfExists(const std::string& fileName);

}  // namespace ZET

#endif
