#ifndef ZET_PARAM_RULES_H
#define ZET_PARAM_RULES_H

#include <cstddef>
#include <set>
#include <string>

#include "text/ParamLook.h"
#include "zet/deploy/Observer.h"

/// What must hold for a parameter's lines because the module would not see some of them, or see too many.
/// Each `Require...` throws a `Failure`.
namespace ZET::Deploy {

/// A parameter as it was found in a file.
struct FoundParam {
    const std::string& path;
    const std::string& name;
    const Text::ParamLook& look;
};

/// Requires that no line sets it with blanks before the "=": the line would stay, and programs that read the
/// file would see two. `command` is the one to use with a PATTERN instead, and `effect` what it does to the
/// line.
void RequireNoBlanks(const FoundParam& found, const std::string& command, const std::string& effect);

/// Requires that no line sets it behind a byte order mark, where the line would stay, too.
void RequireNoMarkBefore(const FoundParam& found);

/// These require that only one section has lines of it that a lookup or a restore would take.
void RequireOneSectionToGet(const FoundParam& found);
void RequireOneSectionToRestore(const FoundParam& found);

/// All that is required of a parameter that is set: none of the lines above, and only one section that has it
/// or would get it, unless the edit is about one section.
void RequireSettable(const FoundParam& found, bool isInSection);

/// The numbers of the lines that an edit parts from the next one, in which they go on: a line that sets it,
/// of which the rest stays as a line of its own, or the line before. Without markers, the new line may be a
/// part of the one before, and go on itself (`goesOn`).
std::set<std::size_t> LinesPartedBySet(const FoundParam& found, bool noMarkers, bool goesOn);

/// The same where the lines are commented out: those that are so already stay.
std::set<std::size_t> LinesPartedByUnset(const FoundParam& found);

/// Reports which lines the edit is about, if it is not the one line that everybody expects. `oneLine` says
/// how one of several is set.
void TellLinesToSet(Observer& observer, const FoundParam& found, const std::string& oneLine);

}  // namespace ZET::Deploy

#endif
