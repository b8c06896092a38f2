#ifndef ZET_CLI_OWN_WORDS_H
#define ZET_CLI_OWN_WORDS_H

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Translation.h"
#include "text/Joined.h"

/// Errors in a command line, in the user's language; the library that parses it reports them in English. Only
/// for CommandLine.cpp, since that library takes long to compile.
namespace ZET::Cli {

/// A value must be one of some words.
class OneOfWords : public CLI::Validator {
  public:
    explicit OneOfWords(const std::vector<std::string>& words) {
        desc_function_ = [words] { return "{" + Text::Joined(words, ",") + "}"; };
        func_ = [words](const std::string& given) {
            if (std::find(words.begin(), words.end(), given) != words.end()) return std::string();
            return Filled(_("\"%s\" is none of %s"), {given, Text::Joined(words, ", ")});
        };
    }
};

/// The message for unrecognised words.
inline std::string Unexpected(const std::vector<std::string>& words) {
    return Filled(Plural("The following argument was not expected: %s",
                         "The following arguments were not expected: %s", words.size()),
                  {Text::Joined(words, " ")});
}

/// Translates the library's `sentence`, which is all that it provides; empty if it is not about this option.
/// Compares it with what the library would say about the option, so that its wording may change.
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
