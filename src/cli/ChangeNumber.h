#ifndef ZET_CHANGE_NUMBER_H
#define ZET_CHANGE_NUMBER_H

#include <cstdint>
#include <string>

namespace ZET::Cli {

bool IsNumber(const std::string& word);

/// The number of a change that a word is, whether the history has it or not; a `UsageError` when it is none.
std::int64_t ChangeNumber(const std::string& word);

}  // namespace ZET::Cli

#endif
