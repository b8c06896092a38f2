#ifndef ZET_SHELL_WORD_H
#define ZET_SHELL_WORD_H

#include <string>
#include <string_view>

namespace ZET::Text {

/// The word in a form that a shell reads as one word, quoted if necessary.
std::string ShellWord(std::string_view word);

}  // namespace ZET::Text

#endif
