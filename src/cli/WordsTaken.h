#ifndef ZET_CLI_WORDS_TAKEN_H
#define ZET_CLI_WORDS_TAKEN_H

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What the library takes the words of a command line for where nobody meant them so. For CommandLine.cpp
/// alone, as it takes long to compile.
namespace ZET::Cli {

inline bool IsIn(const std::vector<std::string>& words, const std::string& word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

/// The words that are neither options nor of options, as the commands take them.
inline std::vector<std::string> OperandsOf(const CLI::App& app) {
    std::vector<std::string> operands;
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_positional())
            operands.insert(operands.end(), option->results().begin(), option->results().end());
    }
    for (const CLI::App* command : app.get_subcommands())
        for (std::string& operand : OperandsOf(*command))
            operands.push_back(std::move(operand));
    return operands;
}

/// Groups of letters such as "-q10": behind the "q", the library goes on with "-10", which is no option, and
/// takes it for an operand.
inline std::vector<std::string> SplitGroups(const CLI::App& app, const std::vector<std::string>& arguments) {
    const std::vector<std::string> operands = OperandsOf(app);
    const auto isSplit = [&](const std::string& word) {
        return word.starts_with('-') && !word.starts_with("--") &&
               std::any_of(operands.begin(), operands.end(), [&](const std::string& operand) {
                   return operand.starts_with('-') && !IsIn(arguments, operand) &&
                          word.ends_with(std::string_view(operand).substr(1));
               });
    };
    std::vector<std::string> groups;
    std::copy_if(arguments.begin(), arguments.end(), std::back_inserter(groups), isSplit);
    return groups;
}

}  // namespace ZET::Cli

#endif
