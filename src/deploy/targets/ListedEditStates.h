#ifndef ZET_LISTED_EDIT_STATES_H
#define ZET_LISTED_EDIT_STATES_H

#include <string>
#include <vector>

#include "deploy/targets/LinesInPlace.h"
#include "deploy/targets/ListedLines.h"
#include "zet/IZETCore.h"
#include "zet/deploy/Status.h"

namespace ZET::Deploy {

/// How a target, or a line that the lists ask for, compares with what a commit would make of it.
inline constexpr char kInSync[] = "in sync";
inline constexpr char kPending[] = "pending";
inline constexpr char kEdited[] = "edited";
inline constexpr char kMissing[] = "missing";
inline constexpr char kNotCommitted[] = "not committed";
inline constexpr char kDiffers[] = "differs";  // where nobody can tell whose edit a file holds
inline constexpr char kUnknown[] = "unknown";

/// One of these states, for one line.
std::string StateOfLine(const FileWithLines& file, const LineToSet& line,
                        const std::vector<LineInPlace>& places, IZETCore& core);

/// Whether a line outside of blocks stands where a commit has set one: somebody wrote it, and it gives way to
/// a new block.
bool IsTakenOver(const FileWithLines& file, const LineToSet& line, const std::vector<LineInPlace>& places,
                 IZETCore& core);

/// The states of the lines that the lists ask for, and of those that they asked for before.
std::vector<ListedEditState> StatesOfEdits(Deployment& product, const ListedLines& lines);

}  // namespace ZET::Deploy

#endif
