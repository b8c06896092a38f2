#ifndef ZET_KEPT_ENTRIES_H
#define ZET_KEPT_ENTRIES_H

#include <cstdint>

#include "deploy/state/store/Store.h"

namespace ZET::Deploy {

/// A `Failure` where what came after the entry is not all kept any more; `remedy` gets the number of the
/// first of which it is.
void RequireAllKeptAfter(Store& store, std::int64_t number, const char* remedy);

}  // namespace ZET::Deploy

#endif
