#ifndef ZET_CHANGE_NUMBER_H
#define ZET_CHANGE_NUMBER_H

#include <cstdint>
#include <string>

namespace ZET::Cli {

bool IsNumber(const std::string& word);

/// The number of a change given as a word, whether the history has it or not; throws a `UsageError` if it is
/// no number.
std::int64_t ChangeNumber(const std::string& word);

}  // namespace ZET::Cli

#endif
