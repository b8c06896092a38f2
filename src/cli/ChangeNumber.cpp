#include "cli/ChangeNumber.h"

#include <charconv>

#include "cli/Translation.h"
#include "zet/deploy/Failure.h"

namespace ZET::Cli {

bool IsNumber(const std::string& word) {
    return !word.empty() && word.find_first_not_of("0123456789") == std::string::npos;
}

std::int64_t ChangeNumber(const std::string& word) {
    std::int64_t number = 0;
    const char* const end = word.data() + word.size();
    if (!IsNumber(word) || std::from_chars(word.data(), end, number).ec != std::errc())
        throw Deploy::UsageError(
            Filled(_("\"%s\" is no number of a change (\"history\" tells them)"), {word}));
    return number;
}

}  // namespace ZET::Cli
