#ifndef ZET_CORE_FILE_COPY_H
#define ZET_CORE_FILE_COPY_H

#include <string>

namespace ZET {

/// Copies the bytes and attributes of the regular file `from` (a last link is followed) into a new file
/// `copy` and makes them durable. A left-over regular file of that name, with no other name, is replaced.
/// `to` is the name that the copy is for, for messages. On failure there is no `copy`.
void MakeDurableCopy(const std::string& from, const std::string& to, const std::string& copy);

}  // namespace ZET

#endif
