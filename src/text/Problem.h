#ifndef ZET_PROBLEM_H
#define ZET_PROBLEM_H

#include <string>

#include "cli/ExitStatus.h"
#include "cli/Report.h"

namespace ZET {

/// A problem in a file that somebody edits by hand.
struct Problem {
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

    Fields ToFields() const;

    /// Takes what is quoted out of the text, and tells why.
    void HideQuoted(const std::string& excuse);
};

/// A failure with the file, told as one problem among others.
Problem ProblemOf(const std::string& file, const Failure& failure);

}  // namespace ZET

#endif
