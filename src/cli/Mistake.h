#ifndef ZET_CLI_MISTAKE_H
#define ZET_CLI_MISTAKE_H

#include <string>
#include <string_view>
#include <vector>

namespace ZET::Cli {

/// What is wrong with a command line, as the library that reads it tells.
struct Mistake {
    std::string command;  ///< with the program, or it alone; its help tells more
    std::string message;
    bool isWordMissing = false;     ///< one that has to be there
    bool isCommandMissing = false;  ///< and that word is a command
    std::string lastWord;
    std::vector<std::string> unknown;       ///< words that nothing took
    std::vector<std::string> splitGroups;   ///< of letters, with the rest taken for a word
    std::vector<std::string> behindMarker;  ///< words that "--" makes no options
    std::vector<std::string> commands;      ///< that could have come
    std::vector<std::string> options;       ///< that could have come
};

bool IsIn(const std::vector<std::string>& words, const std::string& word);
bool IsOption(std::string_view word);

/// In words, and what to do about it.
std::string Describe(const Mistake& mistake);

/// Empty, or the question whether the nearest of these names was meant.
std::string DidYouMean(const std::string& word, const std::vector<std::string>& names);

}  // namespace ZET::Cli

#endif
