#ifndef ZET_STORE_ERASURE_H
#define ZET_STORE_ERASURE_H

#include <cstddef>
#include <string>
#include <vector>

#include "deploy/state/store/Database.h"
#include "deploy/state/store/Records.h"

namespace ZET::Deploy {

/// What was taken out of the store.
struct Erasure {
    std::size_t texts = 0;
    std::vector<std::string> alsoHeld;  ///< other files that have one of the texts
};

/// How many texts the store has of these files.
std::size_t CountTextsOf(Database& database, const std::vector<std::string>& paths);

/// Takes the texts of the files out of the rows, and also the words of the commands that wrote them, except
/// those that tell where and what was done, and the user's own message.
Erasure EraseTexts(Database& database, const std::vector<std::string>& paths);

}  // namespace ZET::Deploy

#endif
