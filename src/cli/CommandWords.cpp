#include "cli/CommandWords.h"

#include <cstddef>
#include <optional>

#include "cli/Names.h"  // IWYU pragma: keep, no name of it is ever written

namespace ZET::Cli {

namespace {

/// Where the text of a file, or a value, begins in the word; none if it contains none.
std::optional<std::size_t> TextIn(const std::string& word, const CallInReading& call) {
    for (const std::string* text : call.texts)
        if (word == *text) return 0;
    for (const std::vector<std::string>* assignments : call.assignments) {
        for (const std::string& assignment : *assignments) {
            if (word.ends_with(assignment)) return word.size() - assignment.size() + assignment.find('=') + 1;
        }
    }
    return std::nullopt;
}

}  // namespace

std::vector<CommandWord> WordsOf(const std::vector<std::string>& arguments, const CallInReading& call) {
    std::vector<CommandWord> words;
    for (const std::string& argument : arguments) {
        const std::optional<std::size_t> text = TextIn(argument, call);
        words.push_back({argument, text.has_value(), text.value_or(0)});
    }
    return words;
}

}  // namespace ZET::Cli
