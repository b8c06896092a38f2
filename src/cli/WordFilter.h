#ifndef ZET_CLI_WORD_FILTER_H
#define ZET_CLI_WORD_FILTER_H

#include <algorithm>
#include <cstddef>
#include <set>
#include <string_view>
#include <utility>

namespace ZET::Cli {

/// Tells which commands and options a command line may name. Registering one takes longer than searching the
/// words, and those that the filter rejects cannot be meant by any word.
class WordFilter {
  public:
    using Words = std::set<std::string_view>;

    explicit WordFilter(Words words) : m_words(std::move(words)) {}

    bool MayNameCommand(std::string_view name) const { return m_words.count(name) != 0; }

    /// `names` in the library's form: "-c,--config", or the long name alone.
    bool MayNameOption(std::string_view names) const {
        const std::size_t comma = names.find(',');
        const std::string_view letter = comma == std::string_view::npos ? "" : names.substr(1, comma - 1);
        const std::string_view name = names.substr(comma == std::string_view::npos ? 0 : comma + 1);
        return std::any_of(m_words.begin(), m_words.end(), [&](std::string_view word) {
            // Its letter may be part of a group, and either form may be followed by a value.
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
