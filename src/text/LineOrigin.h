#ifndef ZET_LINE_ORIGIN_H
#define ZET_LINE_ORIGIN_H

#include <cstddef>
#include <string_view>
#include <vector>

#include "text/ManagedText.h"

namespace ZET::Text {

/// Where a line of a file that was made from a template comes from.
struct LineOrigin {
    enum class Certainty {
        None,      ///< not from the template: the notice, a managed block
        Rendered,  ///< the template's line can have become this one
        Differs,   ///< it cannot, but stands in its place
        Unknown    ///< the file was edited since, or the template changed, and the lines do not tell where
    };

    Certainty certainty = Certainty::None;
    std::size_t templateLine = 0;  ///< from 1; 0: not known
};

/// For each line of a made file, at its number less one, the line of the template that it was rendered from.
/// A line that a managed block replaced counts as the kept former line before the block.
std::vector<LineOrigin> TraceLines(const ManagedText& file, std::string_view templateText);

/// Whether the template's line can become that line, whatever the values are.
bool CanBecome(std::string_view templateLine, std::string_view line);

}  // namespace ZET::Text

#endif
