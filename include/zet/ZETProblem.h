#ifndef ZET_ZETPROBLEM_H
#define ZET_ZETPROBLEM_H

#include <string>

#include "zet/ZETApi.h"

namespace ZET {

/// A problem in a file that somebody edits by hand, or the facts of a failure.
struct ZET_API Problem {
    std::string file{};  ///< empty if it concerns no single file
    int line = 0;        ///< 0 for the file as a whole
    int column = 0;      ///< in bytes, from 1; 0 for the line as a whole
    std::string text{};
    std::string remedy{};        ///< empty if none is known
    std::string quoted{};        ///< the part of `text` that is quoted from the file or a value
    std::string output{};        ///< lines to show below it: output of a program, or a list
    bool isOfUser = false;       ///< true if only this user lacks the permission
    bool textNamesFile = false;  ///< `text` names the file, so no prefix is needed

    /// "file:line:column", as far as known.
    std::string Place() const;

    /// "file:line:column: text (remedy)" in one line; unknown parts are left out.
    std::string Describe() const;

    /// Removes the quoted part from the text, and gives `excuse` as the reason.
    void HideQuoted(const std::string& excuse);
};

}  // namespace ZET

#endif
