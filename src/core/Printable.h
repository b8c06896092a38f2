#ifndef ZET_CORE_PRINTABLE_H
#define ZET_CORE_PRINTABLE_H

#include <string>
#include <string_view>

namespace ZET {

/// `text` on one line that no terminal obeys: each control character as an escape sequence such as "\n" or
/// "\x1b", everything else as it is.
std::string Printable(std::string_view text);

}  // namespace ZET

#endif
