#ifndef ZET_LINES_IN_PLACE_H
#define ZET_LINES_IN_PLACE_H

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "deploy/targets/ListedLines.h"
#include "text/ManagedText.h"

namespace ZET::Deploy {

/// A line of a file that is not one of the system's own.
struct LineInPlace {
    std::size_t number = 0;
    std::string text;
    bool isInBlock = false;
};

std::vector<LineInPlace> LinesIn(const Text::ManagedText& text);

/// The lines that stand in blocks.
std::set<std::string> BlockLinesOf(std::string_view text);

/// The lines that only this role has set in the file, and that no list asks for any more; one whose entry is
/// refused is none of them.
std::vector<RememberedLine> FormerLinesOf(Deployment& product, const FileWithLines& file);

/// The entry of the lists that asks for a line which a commit of its role has set in the file; null: there is
/// none any more.
const ListedEdit* EntryOf(Deployment& product, const std::string& path, const RememberedLine& line);

}  // namespace ZET::Deploy

#endif
