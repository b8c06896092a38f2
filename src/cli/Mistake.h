#ifndef ZET_CLI_MISTAKE_H
#define ZET_CLI_MISTAKE_H

#include <string>
#include <vector>

namespace ZET::Cli {

/// An error in a command line, as reported by the library that parses it.
struct Mistake {
    std::string program;
    std::string message;
    bool isWordMissing = false;     ///< a required word is missing
    bool isCommandMissing = false;  ///< the missing word is a command
    std::string lastWord;
    std::vector<std::string> unknown;   ///< words that were not recognised
    std::vector<std::string> commands;  ///< commands that were possible here
    std::vector<std::string> options;   ///< options that were possible here
};

/// The mistake in words, and what to do about it.
std::string Describe(const Mistake& mistake);

/// The question whether the nearest of these names was meant; empty if none is near.
std::string DidYouMean(const std::string& word, const std::vector<std::string>& names);

}  // namespace ZET::Cli

#endif
