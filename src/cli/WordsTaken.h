#ifndef ZET_CLI_WORDS_TAKEN_H
#define ZET_CLI_WORDS_TAKEN_H

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/Mistake.h"

/// Finds words of a command line that CLI11 takes for something that nobody meant. Only for CommandLine.cpp,
/// since CLI11 takes long to compile.
namespace ZET::Cli {

/// The words that the commands took as operands, or else those that their options took as values.
inline std::vector<std::string> WordsTaken(const CLI::App& app, bool areOperands) {
    std::vector<std::string> words;
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_positional() == areOperands)
            words.insert(words.end(), option->results().begin(), option->results().end());
    }
    for (const CLI::App* command : app.get_subcommands())
        for (std::string& word : WordsTaken(*command, areOperands))
            words.push_back(std::move(word));
    return words;
}

/// Groups of option letters such as "-q10": after the "q", CLI11 continues with "-10", which is no option,
/// and takes it for an operand.
inline std::vector<std::string> SplitGroups(const CLI::App& app, const std::vector<std::string>& arguments) {
    const auto isSplit = [&](const std::string& word) {
        if (!IsOption(word) || word.starts_with("--") || word.find_first_of("0123456789", 2) == word.npos)
            return false;
        const std::vector<std::string> operands = WordsTaken(app, true);
        return std::any_of(operands.begin(), operands.end(), [&](const std::string& operand) {
            return IsOption(operand) && !IsIn(arguments, operand) &&
                   word.ends_with(std::string_view(operand).substr(1));
        });
    };
    std::vector<std::string> groups;
    std::copy_if(arguments.begin(), arguments.end(), std::back_inserter(groups), isSplit);
    return groups;
}

/// The words behind a "--" that is not itself a value.
inline std::vector<std::string> BehindMarker(const CLI::App& app, const std::vector<std::string>& arguments) {
    const auto marker = std::find(arguments.begin(), arguments.end(), "--");
    if (marker == arguments.end() || IsIn(WordsTaken(app, false), *marker)) return {};
    return {marker + 1, arguments.end()};
}

/// The words behind "--" that CLI11 takes for options all the same, because the command takes no more
/// operands.
inline std::vector<std::string> OptionsBehindMarker(const CLI::App& app,
                                                    const std::vector<std::string>& arguments) {
    std::vector<std::string> options = BehindMarker(app, arguments);
    std::erase_if(options, [&](const std::string& word) {
        return !IsOption(word) || IsIn(WordsTaken(app, true), word);
    });
    return options;
}

}  // namespace ZET::Cli

#endif
