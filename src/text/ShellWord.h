#ifndef ZET_SHELL_WORD_H
#define ZET_SHELL_WORD_H

#include <string>
#include <string_view>

namespace ZET::Text {

/// The word in a form that a shell reads as one word, quoted if necessary. Control characters, and bytes that
/// are no characters, become escapes, which most shells read ($'...').
std::string ShellWord(std::string_view word);

/// The same of a word that the history shows. One whose end it hides stays as it is: nobody calls it again.
std::string ShellWordOrHidden(std::string_view word);

/// The same as `ShellWord` of a file, that no program takes for an option.
std::string ShellPath(std::string_view path);

}  // namespace ZET::Text

#endif
