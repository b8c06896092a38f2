#ifndef ZET_COMMAND_WORDS_H
#define ZET_COMMAND_WORDS_H

#include <string>
#include <vector>

#include "cli/CommandLine.h"
#include "zet/deploy/Options.h"

namespace ZET::Cli {

/// The arguments in the form that the history takes. A word that equals the text of a file, or a value, given
/// to the call is marked as such, whatever else it was meant to be.
std::vector<Deploy::CommandWord> WordsOf(const std::vector<std::string>& arguments,
                                         const CallInReading& call);

}  // namespace ZET::Cli

#endif
