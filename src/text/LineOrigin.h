#ifndef ZET_LINE_ORIGIN_H
#define ZET_LINE_ORIGIN_H

#include <cstddef>
#include <string_view>
#include <vector>

#include "text/ManagedText.h"
#include "zet/ZETTypes.h"

namespace ZET::Text {

/// Where a line of a file that was made from a template comes from.
struct LineOrigin {
    enum class Certainty {
        None,      ///< not from the template: the notice, a managed block
        Rendered,  ///< the template line can have become this one
        Differs,   ///< it cannot, but this line is in its place
        Unknown    ///< the file or the template changed since, and the lines cannot be matched
    };

    Certainty certainty = Certainty::None;
    std::size_t templateLine = 0;  ///< from 1; 0 if unknown
};

/// For each line of a file made from a template (index: number minus one), the template line that it was
/// rendered from: the same one for all lines that `values`, by placeholder, make of it. For a line that a
/// managed block replaced, the kept former line before the block counts.
std::vector<LineOrigin> TraceLines(const ManagedText& file, std::string_view templateText,
                                   const StringMap& values = {});

/// Whether the template line can become that line, whatever the values are.
bool CanBecome(std::string_view templateLine, std::string_view line);

}  // namespace ZET::Text

#endif
