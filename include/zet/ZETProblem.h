#ifndef ZET_ZETPROBLEM_H
#define ZET_ZETPROBLEM_H

#include <string>

#include "zet/ZETApi.h"

namespace ZET {

/// A problem in a file that somebody edits by hand, or what is known of a failure.
struct ZET_API Problem {
    std::string file{};  ///< empty: of no one file
    int line = 0;        ///< 0: the file as a whole
    int column = 0;      ///< 0: the line as a whole; bytes, from 1
    std::string text{};
    std::string remedy{};        ///< empty: none is known
    std::string quoted{};        ///< what of the file's own text, or a value's, stands in `text`
    std::string output{};        ///< lines below it: what a program printed about it, or a list
    bool isOfUser = false;       ///< only this user may not do what would have to be done
    bool textNamesFile = false;  ///< which then need not stand before it

    /// "file:line:column", as far as it is known
    std::string Place() const;

    /// "file:line:column: text (remedy)", in one line; what is not known is left out
    std::string Describe() const;

    /// Takes what is quoted out of the text, and tells why.
    void HideQuoted(const std::string& excuse);
};

}  // namespace ZET

#endif
