#ifndef ZET_BARE_LINES_H
#define ZET_BARE_LINES_H

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "deploy/state/Host.h"
#include "deploy/state/store/Records.h"

namespace ZET::Deploy {

/// Lines that the product had set in blocks, and that stand in a file without them since somebody took the
/// markers out. By line: what stood there before; none if the line was new.
using BareLines = std::map<std::string, std::optional<std::string>>;

/// Those of a text into which somebody made the one that the product left.
BareLines BareLinesOf(std::string_view left, std::string_view text);

/// Those of a file that has this text, as far as the history keeps the one that the product left. Reports an
/// unusable history as a warning.
BareLines BareLinesIn(Host& host, const KnownFile& known, std::string_view text);

/// The text with what stood there before in the place of the lines.
std::string WithoutBareLines(std::string_view text, const BareLines& lines);

}  // namespace ZET::Deploy

#endif
