#ifndef ZET_CLI_FAILURE_WORDS_H
#define ZET_CLI_FAILURE_WORDS_H

#include <string>

#include "zet/ZETProblem.h"
#include "zet/deploy/Failure.h"

/// What the library says of failures is English wherever it is called, and the fields of the JSON keep it so.
/// Here it gets the words of whoever reads it on a terminal.
namespace ZET::Cli {

/// The sentence of the library in the reader's language, as far as it is known.
std::string Said(const std::string& sentence);

/// As `Describe`: "file:line:column: text (remedy)".
std::string Said(const Problem& problem);

/// What a failure says, with what stands around it.
std::string Said(const Deploy::Failure& failure);

}  // namespace ZET::Cli

#endif
