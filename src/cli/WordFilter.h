#ifndef ZET_CLI_WORD_FILTER_H
#define ZET_CLI_WORD_FILTER_H

#include <algorithm>
#include <cstddef>
#include <set>
#include <string_view>
#include <utility>

namespace ZET::Cli {

/// Which commands and options the words of a command line may ask for. To make one known takes longer than to
/// look through the words; those of which this says no cannot be meant by any of them.
class WordFilter {
  public:
    using Words = std::set<std::string_view>;

    explicit WordFilter(Words words) : m_words(std::move(words)) {}

    bool MayNameCommand(std::string_view name) const { return m_words.count(name) != 0; }

    /// `names` as the library has them: "-c,--config", or the long one alone.
    bool MayNameOption(std::string_view names) const {
        const std::size_t comma = names.find(',');
        const std::string_view letter = comma == std::string_view::npos ? "" : names.substr(1, comma - 1);
        const std::string_view name = names.substr(comma == std::string_view::npos ? 0 : comma + 1);
        return std::any_of(m_words.begin(), m_words.end(), [&](std::string_view word) {
            // Its letter may stand in a group of them, and a value behind either.
            if (word.starts_with("--")) return word.starts_with(name);
            return !letter.empty() && word.starts_with('-') && word.find(letter) != std::string_view::npos;
        });
    }

    const Words& All() const { return m_words; }

  private:
    Words m_words;
};

}  // namespace ZET::Cli

#endif
