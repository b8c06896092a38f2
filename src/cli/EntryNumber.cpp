#include "cli/EntryNumber.h"
#include "cli/Translation.h"

#include <charconv>

#include "zet/deploy/Failure.h"

namespace ZET::Cli {

std::int64_t EntryNumber(const std::string& word) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || end != word.data() + word.size() || number <= 0)
        throw Deploy::UsageError(word + ": " + _("is no number of an entry (\"history\" lists them)"));
    return number;
}

}  // namespace ZET::Cli
