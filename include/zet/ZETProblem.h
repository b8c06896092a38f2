#ifndef ZET_ZETPROBLEM_H
#define ZET_ZETPROBLEM_H

#include <string>

#include "zet/ZETApi.h"

namespace ZET {

/// A problem in a file that somebody edits by hand.
struct ZET_API Problem {
    std::string file;
    int line = 0;    ///< 0: the file as a whole
    int column = 0;  ///< 0: the line as a whole; bytes, from 1
    std::string text;
    std::string remedy;
    std::string quoted{};   ///< what of the file's own text, or a value's, stands in `text`
    std::string output{};   ///< what a check command printed about it
    bool isOfUser = false;  ///< only this user may not do what would have to be done

    /// "file:line:column: text (remedy)", in one line
    std::string Describe() const;

    /// Takes what is quoted out of the text, and tells why.
    void HideQuoted(const std::string& excuse);
};

}  // namespace ZET

#endif
