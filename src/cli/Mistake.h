#ifndef ZET_CLI_MISTAKE_H
#define ZET_CLI_MISTAKE_H

#include <string>
#include <string_view>
#include <vector>

namespace ZET::Cli {

/// An error in a command line, as reported by the library that parses it.
struct Mistake {
    std::string command;  ///< with the program, or it alone; its help tells more
    std::string message;
    bool isWordMissing = false;     ///< a required word is missing
    bool isCommandMissing = false;  ///< the missing word is a command
    std::string lastWord;
    std::vector<std::string> unknown;       ///< words that were not recognised
    std::vector<std::string> splitGroups;   ///< groups of option letters whose rest was taken for a word
    std::vector<std::string> behindMarker;  ///< words that are no options, as they stand behind "--"
    bool isRightBeforeMarker = false;       ///< the options among them would be right before it
    std::vector<std::string> commands;      ///< commands that were possible here
    std::vector<std::string> options;       ///< options that were possible here
};

bool IsIn(const std::vector<std::string>& words, const std::string& word);
bool IsOption(std::string_view word);

/// The mistake in words, and what to do about it.
std::string Describe(const Mistake& mistake);

/// The question whether the nearest of these names was meant; empty if none is near.
std::string DidYouMean(const std::string& word, const std::vector<std::string>& names);

}  // namespace ZET::Cli

#endif
