#ifndef ZET_STORE_SHARED_MEMORY_H
#define ZET_STORE_SHARED_MEMORY_H

#include <string>

namespace ZET::Deploy {

/// Whether all processes that open the store can share memory beside it, as a journal needs that is read
/// while it is written. No file system of the network counts: its hosts would not see each other's memory. To
/// be asked while the library has no memory of the store: it would lose its locks.
bool CanShareMemory(const std::string& file);

}  // namespace ZET::Deploy

#endif
