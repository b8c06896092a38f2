#ifndef ZET_ADOPTION_H
#define ZET_ADOPTION_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "text/Hunks.h"
#include "zet/ZETTypes.h"

namespace ZET::Text {

/// A line of an edited file that no line of a template can become.
struct UnadoptableLine {
    std::size_t line = 0;                   ///< of the edited file
    std::vector<std::string> placeholders;  ///< whose values were changed, or cannot be told apart any more
};

struct Adoption {
    std::string templateText;
    std::vector<UnadoptableLine>
        refused;              ///< none: the text renders to the edited file, as far as can be told
    bool isTraceable = true;  ///< false: nobody can tell which line of the template became which
};

/// Turns the edit of a rendered file into one of its template: lines that were not touched keep theirs, a
/// changed line keeps each placeholder whose value is found in it, in order, in exactly one way, and other
/// lines are taken over as they are, but for one that was moved unchanged, which keeps its placeholders.
/// `hunks` lead from `rendered` to `edited`; `values` are those of the placeholders.
Adoption AdoptEdit(std::string_view templateText, std::string_view rendered, std::string_view edited,
                   const std::vector<Hunk>& hunks, const StringMap& values);

}  // namespace ZET::Text

#endif
