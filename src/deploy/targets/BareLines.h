#ifndef ZET_BARE_LINES_H
#define ZET_BARE_LINES_H

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "deploy/state/Host.h"
#include "deploy/state/store/Records.h"

namespace ZET::Deploy {

/// A line that the product had set in a block, and that stands in a file without it since somebody took the
/// markers out.
struct BareLine {
    std::string line;
    std::optional<std::string> former;  ///< what stood there before; none if the line was new
};

/// By the number of the line in the text.
using BareLines = std::map<std::size_t, BareLine>;

/// Those of a text into which somebody made the one that the product left. None if that is not certain: then
/// a line may be somebody's own. Only markers, former lines, comments and empty lines may be gone.
BareLines BareLinesOf(std::string_view left, std::string_view text);

/// Those of a file that has this text, as far as the history keeps the one that the product left. Reports an
/// unusable history as a warning.
BareLines BareLinesIn(Host& host, const KnownFile& known, std::string_view text);

/// The text with what stood there before in the place of the lines.
std::string WithoutBareLines(std::string_view text, const BareLines& lines);

}  // namespace ZET::Deploy

#endif
