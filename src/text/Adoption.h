#ifndef ZET_ADOPTION_H
#define ZET_ADOPTION_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "text/Hunks.h"
#include "zet/ZETTypes.h"

namespace ZET::Text {

/// A line of an edited file that no template line can produce.
struct UnadoptableLine {
    std::size_t line = 0;                   ///< in the edited file
    std::vector<std::string> placeholders;  ///< those whose values were changed or are ambiguous
};

struct Adoption {
    std::string templateText;
    std::vector<UnadoptableLine>
        refused;              ///< if empty, the text renders to the edited file, as far as can be determined
    bool isTraceable = true;  ///< false if template lines and rendered lines cannot be matched
};

/// Turns the edit of a rendered file into an edit of its template. Untouched lines keep their template lines.
/// A changed line keeps each placeholder if the values are found in it, in order, in exactly one way. Other
/// lines are copied as they are, except that a line that was moved unchanged keeps its placeholders. `hunks`
/// lead from `rendered` to `edited`; `values` are the placeholders' values.
Adoption AdoptEdit(std::string_view templateText, std::string_view rendered, std::string_view edited,
                   const std::vector<Hunk>& hunks, const StringMap& values);

}  // namespace ZET::Text

#endif
