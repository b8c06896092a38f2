#ifndef ZET_SHOWN_DIFF_H
#define ZET_SHOWN_DIFF_H

#include <string>
#include <string_view>

#include "cli/Report.h"

namespace ZET {

class Session;

/// The difference of texts as far as the reader is to see it; empty when it is not wanted.
struct ShownDiff {
    std::string text;        ///< unified
    List places;             ///< of what is hidden: "FILE: lines 3-5 changed"
    std::string excuse;      ///< why it is hidden; empty: it is not
    bool isPrivate = false;  ///< it is, or would be, hidden

    void Append(ShownDiff other);
    void Tell(Report& report) const;

    /// diff, changed_lines
    void AddTo(Fields& fields) const;
};

/// Which lines a unified diff changes, by their numbers in the new text: "lines 3-5, 9 changed"; where lines
/// only go, by those in the old one: "line 7 of the old text removed". Empty when there are none.
std::string ChangedLines(std::string_view diff);

}  // namespace ZET

#endif
