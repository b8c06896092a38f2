#ifndef ZET_LISTED_EDIT_STATES_H
#define ZET_LISTED_EDIT_STATES_H

#include <string>
#include <vector>

#include "deploy/targets/LinesInPlace.h"
#include "deploy/targets/ListedLines.h"
#include "zet/IZETCore.h"
#include "zet/deploy/Status.h"

namespace ZET::Deploy {

/// A name of `StateNames.h`, of one line.
std::string StateOfLine(const FileWithLines& file, const LineToSet& line,
                        const std::vector<LineInPlace>& places, IZETCore& core);

/// Whether a line without a block stands where a commit has set one: a hand's, which gives way to a new
/// block.
bool IsTakenOver(const FileWithLines& file, const LineToSet& line, const std::vector<LineInPlace>& places,
                 IZETCore& core);

/// What the files hold of the lines that the lists ask for.
std::vector<ListedEditState> StatesOfEdits(Deployment& product, const ListedLines& lines);

}  // namespace ZET::Deploy

#endif
