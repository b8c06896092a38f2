#ifndef ZET_CLI_WORDS_TAKEN_H
#define ZET_CLI_WORDS_TAKEN_H

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
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

inline bool IsGroup(std::string_view word) {
    return IsOption(word) && !word.starts_with("--");
}

/// Whether CLI11 may have left `rest` of a group of option letters: "-10" of "-q10". A letter that is unknown
/// is no rest.
inline bool IsRestOf(std::string_view rest, std::string_view group) {
    if (rest.size() < 2 || !IsOption(rest) || std::isalpha(static_cast<unsigned char>(rest[1])) != 0)
        return false;
    return IsGroup(group) && group.ends_with(rest.substr(1));
}

/// Groups of option letters such as "-q10": after the "q", CLI11 continues with "-10", which is no option,
/// and takes it for an operand.
inline std::vector<std::string> SplitGroups(const CLI::App& app, const std::vector<std::string>& arguments) {
    const auto isSplit = [&](const std::string& word) {
        if (!IsGroup(word) || word.find_first_of("0123456789", 2) == word.npos) return false;
        const std::vector<std::string> operands = WordsTaken(app, true);
        return std::any_of(operands.begin(), operands.end(), [&](const std::string& operand) {
            return IsRestOf(operand, word) && !IsIn(arguments, operand);
        });
    };
    std::vector<std::string> groups;
    std::copy_if(arguments.begin(), arguments.end(), std::back_inserter(groups), isSplit);
    return groups;
}

/// The unknown words as they stand among the arguments: CLI11 names "-5" where "-q5" was typed.
inline std::vector<std::string> AsTyped(std::vector<std::string> unknown,
                                        std::vector<std::string> arguments) {
    for (std::string& word : unknown) {
        auto typed = std::find(arguments.begin(), arguments.end(), word);
        if (typed == arguments.end())
            typed = std::find_if(arguments.begin(), arguments.end(),
                                 [&](const std::string& argument) { return IsRestOf(word, argument); });
        if (typed == arguments.end()) continue;
        word = *typed;
        arguments.erase(typed);
    }
    return unknown;
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
