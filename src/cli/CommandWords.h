#ifndef ZET_COMMAND_WORDS_H
#define ZET_COMMAND_WORDS_H

#include <string>
#include <vector>

#include "cli/CommandLine.h"
#include "zet/deploy/Options.h"

namespace ZET::Cli {

/// The arguments as the history takes them: what is equal to the text of a file, or to a value, that the call
/// was given counts as one, whatever else it was meant to be.
std::vector<Deploy::CommandWord> WordsOf(const std::vector<std::string>& arguments,
                                         const CallInReading& call);

}  // namespace ZET::Cli

#endif
