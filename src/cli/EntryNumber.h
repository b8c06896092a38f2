#ifndef ZET_ENTRY_NUMBER_H
#define ZET_ENTRY_NUMBER_H

#include <cstdint>
#include <string>

namespace ZET::Cli {

/// The number of an entry of the history that a word is; a `UsageError` when it is none.
std::int64_t EntryNumber(const std::string& word);

}  // namespace ZET::Cli

#endif
