#include "deploy/state/KeptEntries.h"

#include <string>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"

namespace ZET::Deploy {

void RequireAllKeptAfter(Store& store, std::int64_t number, const char* remedy) {
    if (number >= store.LastPruned()) return;
    throw Failure(
        {.file = store.File(),
         .text = Words("not all changes after %s are kept any more, so nobody knows what was there then",
                       std::to_string(number)),
         .remedy = Words(remedy, std::to_string(store.LastPruned() + 1))});
}

}  // namespace ZET::Deploy
