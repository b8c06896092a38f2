#ifndef ZET_SHOWN_WORDS_H
#define ZET_SHOWN_WORDS_H

#include <string>
#include <vector>

/// The words of a command that the history keeps, without what not everybody may see.
namespace ZET::Text {

/// Stands for a word that is not meant for everybody.
inline constexpr char kHiddenWord[] = "***";

/// The words without what the texts hold: of a word NAME=VALUE the value is hidden, of any other all.
/// Options, the command's own words, the places that "--root" and its like take, numbers of entries, and
/// names of the files stay, as they tell where something was done, even if a text holds them, too.
std::vector<std::string> WordsWithoutTexts(const std::vector<std::string>& words,
                                           const std::vector<std::string>& texts,
                                           const std::vector<std::string>& paths = {});

/// The same if nobody knows what the texts hold, or if they hold each of the words.
std::vector<std::string> WordsWithoutAnyText(const std::vector<std::string>& words,
                                             const std::vector<std::string>& paths = {});

}  // namespace ZET::Text

#endif
