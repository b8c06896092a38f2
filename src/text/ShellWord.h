#ifndef ZET_SHELL_WORD_H
#define ZET_SHELL_WORD_H

#include <string>
#include <string_view>

namespace ZET::Text {

/// As a shell takes it for one word: in quotes where it has to be.
std::string ShellWord(std::string_view word);

}  // namespace ZET::Text

#endif
