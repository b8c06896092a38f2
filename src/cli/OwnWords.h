#ifndef ZET_CLI_OWN_WORDS_H
#define ZET_CLI_OWN_WORDS_H

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Translation.h"

/// What is wrong with a command line, in the reader's language; the library that reads the words tells it in
/// English. For CommandLine.cpp alone, as that takes long to compile.
namespace ZET::Cli {

inline std::string ListOf(const std::vector<std::string>& words, std::string_view separator) {
    std::string list;
    for (const std::string& word : words)
        list.append(list.empty() ? "" : separator).append(word);
    return list;
}

/// A value has to be one of some words.
class OneOfWords : public CLI::Validator {
  public:
    explicit OneOfWords(const std::vector<std::string>& words) {
        desc_function_ = [words] { return "{" + ListOf(words, ",") + "}"; };
        func_ = [words](const std::string& given) {
            if (std::find(words.begin(), words.end(), given) != words.end()) return std::string();
            return Filled(_("\"%s\" is none of %s"), {given, ListOf(words, ", ")});
        };
    }
};

/// Words that nothing takes.
inline std::string Unexpected(const std::vector<std::string>& words) {
    return Filled(Plural("The following argument was not expected: %s",
                         "The following arguments were not expected: %s", words.size()),
                  {ListOf(words, " ")});
}

/// What the library says in `sentence`, which is all that it hands out; empty where that is not about this
/// option. It is asked what it would say of the option, so that its words can be others tomorrow.
inline std::string OwnWords(const CLI::Option& option, std::string_view sentence) {
    const std::string name = option.get_name();
    const auto isSaidBy = [&](const CLI::Error& error) { return sentence == error.what(); };
    if (isSaidBy(CLI::RequiredError(name))) return Filled(_("%s is required"), {name});
    if (isSaidBy(CLI::ArgumentMismatch::TypedAtLeast(name, 1, option.get_type_name())))
        return Filled(_("%s: its value is missing"), {name});
    if (isSaidBy(CLI::ArgumentMismatch::AtMost(name, 1, option.count())))
        return Filled(_("%s can be given once only"), {name});
    for (const std::string& word : option.get_lnames())
        if (isSaidBy(CLI::ArgumentMismatch::FlagOverride(word)))
            return Filled(_("%s takes no value"), {name});
    for (const CLI::Option* other : option.get_excludes())
        if (isSaidBy(CLI::ExcludesError(name, other->get_name())))
            return Filled(_("%s excludes %s"), {name, other->get_name()});
    return "";
}

}  // namespace ZET::Cli

#endif
